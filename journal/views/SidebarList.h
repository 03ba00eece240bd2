#pragma once

#include <QListWidget>
#include <QSet>

namespace quillo {

// What stands in the sidebar: a question that can be asked by a click.
struct SidebarItem {
  enum class Kind { AllEntries, OnThisDay, YearInReview, Versions, Damaged, Tag, Place };

  Kind kind{Kind::AllEntries};
  QString name;   // as shown; of a tag or a place that itself
  int count{-1};  // none is shown below 0

  bool operator==(const SidebarItem&) const = default;
};

struct SidebarSection {
  QString title;
  QList<SidebarItem> items;

  bool operator==(const SidebarSection&) const = default;
};

// The list of the sidebar, in sections whose headings fold them. A click or Return asks.
class SidebarList : public QListWidget {
  Q_OBJECT

 public:
  explicit SidebarList(QWidget* parent = nullptr);

  // Keeps the chosen item where it is still there.
  void setSections(const QList<SidebarSection>& sections);
  // The one that the window shows the entries of; another kind of question has none.
  void setChosen(const SidebarItem* item);

  // To be called when the application's palette has changed.
  void applyColors();

 Q_SIGNALS:
  void itemChosen(const SidebarItem& item);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void fill();
  void activate(const QListWidgetItem& item);

  QList<SidebarSection> m_sections;
  QSet<QString> m_folded;
};

}  // namespace quillo
