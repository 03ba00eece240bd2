#pragma once

#include "qlcore/EntryDetails.h"
#include "qlcore/services/PlaceSearch.h"
#include "qlcore/services/QLLocationFormatter.h"

#include <QFrame>
#include <QTimer>

#include <functional>

class QDateTimeEdit;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace quillo {

class MonthView;
class SuggestingField;

// When and where an entry was, and its tags, to be changed: a strip above its text. What was typed counts when Return
// is pressed or the field is left, and at once where it is chosen. Another zone keeps what the clock read. Escape
// leaves the strip, and what was typed in the field goes.
class EntryDetailsView : public QFrame {
  Q_OBJECT

 public:
  enum class Field { When, Place, Tags };

  // The tags in use in the journal, most used first.
  explicit EntryDetailsView(std::function<QStringList()> tags, QWidget* parent = nullptr);

  // What stands in the fields, but for one that is being typed into.
  void setDetails(const EntryDetails& details);
  // What was typed counts, as if the field were left.
  void commit();
  // It does not.
  void forgetTyping();
  void beginEditing(Field field);

  // To be called when the application's palette has changed.
  void applyColors();

 Q_SIGNALS:
  void changed(const EntryDetails& before, const EntryDetails& after);
  // What was typed makes no sense, in one sentence.
  void problemFound(const QString& text);
  void left();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void buildFields();
  void connectFields();
  void layOut(bool isWide);
  void tell(const EntryDetails& after);
  void takeReading();
  enum class Takes { WholeName, FirstFound };
  void takeZone(Takes takes);
  void takeTags();
  void takePlace(Takes takes);
  void takeName();
  void chooseDay();

  std::function<QStringList()> m_tagsInUse;
  QLLocationFormatter m_formatter;
  EntryDetails m_details;
  QString m_town;             // as it stands in the field
  QList<FoundPlace> m_found;  // that are offered
  QGridLayout* m_grid;
  QLabel* m_labels[5];  // When, Zone, Tags, Place, Called
  QDateTimeEdit* m_when;
  QToolButton* m_day;
  SuggestingField* m_zone;
  SuggestingField* m_tags;
  SuggestingField* m_place;
  QLineEdit* m_name;
  QWidget* m_buttons;
  QPushButton* m_noPlace;
  QPushButton* m_done;
  // While the reading is stepped through with a key that is held down.
  QTimer m_pause;
  bool m_isFilling{false};
  bool m_isWide{false};
};

}  // namespace quillo
