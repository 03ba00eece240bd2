#pragma once

#include <QAccessibleWidget>

#include <map>

namespace quillo {

class TimelineView;

// What a screen reader hears of the timeline: a list with one item an entry. Items are made when they are asked for,
// since a journal has many entries and a reader looks at few.
class AccessibleTimeline : public QAccessibleWidget {
 public:
  // Makes Qt's accessibility know the views; done once a process, whoever asks.
  static void install();
  // To be called when other entries are shown, and when another is current; -1 for none.
  static void rowsDidChange(TimelineView& view);
  static void currentDidMove(TimelineView& view, int from, int to);

  explicit AccessibleTimeline(TimelineView& view);
  ~AccessibleTimeline() override;

  [[nodiscard]] int childCount() const override;
  [[nodiscard]] QAccessibleInterface* child(int index) const override;
  [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override;
  [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
  [[nodiscard]] QAccessibleInterface* focusChild() const override;

 private:
  [[nodiscard]] TimelineView& view() const;

  mutable std::map<int, QAccessible::Id> m_rows;
};

}  // namespace quillo
