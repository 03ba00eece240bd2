#pragma once

#include "qlcore/TextMerge.h"
#include "qlcore/conflicts/EntryVersions.h"

#include <QDialog>
#include <QString>

class QComboBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace quillo {

class VersionPane;

// What is to become of the versions of an entry; see JournalConflicts.
struct VersionDecision {
  enum class Kind { Keep, KeepAll, Merge };

  Kind kind{Kind::Keep};
  qsizetype kept{0};  // the number of the version
  QString text;       // that the entry is to have where they are merged
};

// Two versions of an entry side by side, the second of which can be chosen where there are more, and under them the
// texts of all as one, which can be changed. Does nothing with them itself: it tells what was decided.
class VersionsDialog : public QDialog {
  Q_OBJECT

 public:
  explicit VersionsDialog(QWidget* parent = nullptr);

  // There are several versions. Where it is shown already, what was typed stays.
  void setEntry(const EntryVersions& entry, const MergedText& merged);
  [[nodiscard]] const EntryVersions& entry() const { return m_entry; }
  // In one sentence; none where it is empty.
  void setProblem(const QString& text);
  // While a decision is carried out, no other can be made.
  void setAtWork(bool isAtWork);

 Q_SIGNALS:
  void decided(const VersionDecision& decision);

 protected:
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void build();
  [[nodiscard]] QWidget* buildPanes();
  [[nodiscard]] QWidget* buildMerged();
  [[nodiscard]] QWidget* buildFooter();
  void scrollTogether();
  void fillChooser();
  void showVersions();
  void showButtons();
  [[nodiscard]] qsizetype other() const;
  [[nodiscard]] qsizetype newest() const;
  void applyColors();

  EntryVersions m_entry;
  QLabel* m_title;
  VersionPane* m_this;
  VersionPane* m_that;
  QComboBox* m_chooser;
  QLabel* m_mergedNote;
  QPlainTextEdit* m_merged;
  QLabel* m_problem;
  QWidget* m_footer;
  QPushButton* m_keepThis;
  QPushButton* m_keepThat;
  QPushButton* m_keepAll;
  QPushButton* m_merge;
  bool m_isAtWork{false};
};

}  // namespace quillo
