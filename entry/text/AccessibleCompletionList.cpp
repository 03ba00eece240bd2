#include "entry/text/AccessibleCompletionList.h"

#include "entry/text/HashtagCompletionList.h"

#include <QPointer>

namespace quillo {

namespace {

// It may outlive its row and its list in the hands of a screen reader, and is not valid then.
class AccessibleRow : public QAccessibleInterface {
 public:
  AccessibleRow(HashtagCompletionList& list, int row) : m_list(&list), m_row(row) {}

  [[nodiscard]] bool isValid() const override { return m_list && m_row < m_list->tags().size(); }
  [[nodiscard]] QObject* object() const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* parent() const override {
    return m_list ? QAccessible::queryAccessibleInterface(m_list.data()) : nullptr;
  }
  [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  [[nodiscard]] int childCount() const override { return 0; }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  [[nodiscard]] QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Name && isValid() ? u'#' + m_list->tags()[m_row] : QString();
  }
  void setText(QAccessible::Text, const QString&) override {}
  [[nodiscard]] QRect rect() const override {
    if (!isValid()) return {};
    const QRect inList = m_list->rowRect(m_row);
    return {m_list->mapToGlobal(inList.topLeft()), inList.size()};
  }
  [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }
  [[nodiscard]] QAccessible::State state() const override {
    QAccessible::State state;
    state.selectable = true;
    state.selected = isValid() && m_row == m_list->selectedRow();
    state.active = state.selected;
    state.invisible = !isValid() || !m_list->isVisible();
    return state;
  }

 private:
  QPointer<HashtagCompletionList> m_list;
  int m_row;
};

QAccessibleInterface* listFor(const QString& className, QObject* object) {
  if (className != QLatin1StringView(HashtagCompletionList::staticMetaObject.className())) return nullptr;
  return new AccessibleCompletionList(static_cast<HashtagCompletionList&>(*object));
}

void tell(QAccessibleInterface* whom, QAccessible::Event what) {
  if (!whom) return;
  QAccessibleEvent event(whom, what);
  QAccessible::updateAccessibility(&event);
}

}  // namespace

void AccessibleCompletionList::install() {
  QAccessible::installFactory(&listFor);
}

void AccessibleCompletionList::rowsDidChange(HashtagCompletionList& list) {
  if (QAccessible::isActive()) tell(QAccessible::queryAccessibleInterface(&list), QAccessible::ObjectReorder);
}

void AccessibleCompletionList::selectionDidMove(HashtagCompletionList& list, int from, int to) {
  if (!QAccessible::isActive()) return;
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&list);
  if (!accessible) return;
  // Each row tells what it is now.
  for (const int row : {from, to}) tell(accessible->child(row), QAccessible::Selection);
  tell(accessible, QAccessible::SelectionWithin);
}

AccessibleCompletionList::AccessibleCompletionList(HashtagCompletionList& list)
    : QAccessibleWidget(&list, QAccessible::List) {}

AccessibleCompletionList::~AccessibleCompletionList() {
  for (const QAccessible::Id row : m_rows) QAccessible::deleteAccessibleInterface(row);
}

HashtagCompletionList& AccessibleCompletionList::list() const {
  return static_cast<HashtagCompletionList&>(*widget());
}

int AccessibleCompletionList::childCount() const {
  return static_cast<int>(list().tags().size());
}

QAccessibleInterface* AccessibleCompletionList::child(int index) const {
  if (index < 0 || index >= childCount()) return nullptr;
  while (static_cast<int>(m_rows.size()) <= index)
    m_rows.push_back(
        QAccessible::registerAccessibleInterface(new AccessibleRow(list(), static_cast<int>(m_rows.size()))));
  return QAccessible::accessibleInterface(m_rows[static_cast<size_t>(index)]);
}

int AccessibleCompletionList::indexOfChild(const QAccessibleInterface* child) const {
  for (int row = 0; row < childCount(); ++row)
    if (this->child(row) == child) return row;
  return -1;
}

QAccessibleInterface* AccessibleCompletionList::childAt(int x, int y) const {
  return child(list().rowAt(list().mapFromGlobal(QPoint(x, y))));
}

}  // namespace quillo
