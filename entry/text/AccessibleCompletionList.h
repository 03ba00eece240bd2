#pragma once

#include <QAccessibleWidget>

#include <vector>

namespace quillo {

class HashtagCompletionList;

// What a screen reader hears of the list of hashtags: a list with one item a row, of which one may be selected. The
// keyboard stays with the text, so that the choice is told by events.
class AccessibleCompletionList : public QAccessibleWidget {
 public:
  // Makes Qt's accessibility know the lists; done once a process, whoever asks.
  static void install();
  // To be called when other rows are shown, and when the choice has moved; -1 for none.
  static void rowsDidChange(HashtagCompletionList& list);
  static void selectionDidMove(HashtagCompletionList& list, int from, int to);

  explicit AccessibleCompletionList(HashtagCompletionList& list);
  ~AccessibleCompletionList() override;

  [[nodiscard]] int childCount() const override;
  [[nodiscard]] QAccessibleInterface* child(int index) const override;
  [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
  [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;

 private:
  [[nodiscard]] HashtagCompletionList& list() const;

  // Of the rows, made when they are first asked for.
  mutable std::vector<QAccessible::Id> m_rows;
};

}  // namespace quillo
