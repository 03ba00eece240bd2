#include "journal/views/AccessibleTimeline.h"

#include "journal/model/TimelineSource.h"
#include "journal/views/TimelineView.h"

#include <QLocale>
#include <QPointer>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// It may outlive its row and its view in the hands of a screen reader, and is not valid then.
class AccessibleRow : public QAccessibleInterface {
 public:
  AccessibleRow(TimelineView& view, int row) : m_view(&view), m_row(row) {}

  [[nodiscard]] int row() const { return m_row; }
  [[nodiscard]] bool isValid() const override { return m_view && m_row < m_view->rows().rowCount(); }
  [[nodiscard]] QObject* object() const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* parent() const override {
    return m_view ? QAccessible::queryAccessibleInterface(m_view.data()) : nullptr;
  }
  [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  [[nodiscard]] int childCount() const override { return 0; }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  [[nodiscard]] QString text(QAccessible::Text kind) const override;
  void setText(QAccessible::Text, const QString&) override {}
  [[nodiscard]] QRect rect() const override {
    if (!isValid()) return {};
    const QRect inView = m_view->rowRect(m_row);
    return {m_view->viewport()->mapToGlobal(inView.topLeft()), inView.size()};
  }
  [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }
  [[nodiscard]] QAccessible::State state() const override {
    QAccessible::State state;
    state.selectable = true;
    state.focusable = true;
    state.selected = isValid() && m_row == m_view->currentRow();
    state.focused = state.selected && m_view->hasFocus();
    state.offscreen = isValid() && !m_view->viewport()->rect().intersects(m_view->rowRect(m_row));
    state.invisible = !isValid() || !m_view->isVisible();
    return state;
  }

 private:
  QPointer<TimelineView> m_view;
  int m_row;
};

QString AccessibleRow::text(QAccessible::Text kind) const {
  if (!isValid()) return {};
  const TimelineRow* entry = m_view->entryAt(m_row);
  if (kind == QAccessible::Description && entry) {
    QStringList parts = QStringList{entry->versionsText(), entry->placeAndWeather} + entry->tags;
    parts.removeAll(QString());
    return parts.join(u", "_s);
  }
  if (kind != QAccessible::Name) return {};
  const QString day = m_view->locale().toString(m_view->rows().dayOfRow(m_row), QLocale::LongFormat);
  if (!entry) return day;
  return u"%1, %2. %3"_s.arg(day, entry->time, entry->damage.isEmpty() ? entry->text : entry->damage);
}

QAccessibleInterface* viewFor(const QString& className, QObject* object) {
  if (className != QLatin1StringView(TimelineView::staticMetaObject.className())) return nullptr;
  return new AccessibleTimeline(static_cast<TimelineView&>(*object));
}

void tell(QAccessibleInterface* whom, QAccessible::Event what) {
  if (!whom) return;
  QAccessibleEvent event(whom, what);
  QAccessible::updateAccessibility(&event);
}

}  // namespace

void AccessibleTimeline::install() {
  QAccessible::installFactory(&viewFor);
}

void AccessibleTimeline::rowsDidChange(TimelineView& view) {
  if (QAccessible::isActive()) tell(QAccessible::queryAccessibleInterface(&view), QAccessible::ObjectReorder);
}

void AccessibleTimeline::currentDidMove(TimelineView& view, int from, int to) {
  if (!QAccessible::isActive()) return;
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&view);
  if (!accessible) return;
  for (const int row : {from, to}) tell(accessible->child(row), QAccessible::Selection);
  if (view.hasFocus()) tell(accessible->child(to), QAccessible::Focus);
}

AccessibleTimeline::AccessibleTimeline(TimelineView& view) : QAccessibleWidget(&view, QAccessible::List) {}

AccessibleTimeline::~AccessibleTimeline() {
  for (const auto& [row, id] : m_rows) QAccessible::deleteAccessibleInterface(id);
}

TimelineView& AccessibleTimeline::view() const {
  return static_cast<TimelineView&>(*widget());
}

int AccessibleTimeline::childCount() const {
  return view().rows().rowCount();
}

QAccessibleInterface* AccessibleTimeline::child(int index) const {
  if (index < 0 || index >= childCount()) return nullptr;
  QAccessible::Id& id = m_rows[index];
  if (id == 0) id = QAccessible::registerAccessibleInterface(new AccessibleRow(view(), index));
  return QAccessible::accessibleInterface(id);
}

int AccessibleTimeline::indexOfChild(const QAccessibleInterface* child) const {
  for (const auto& [row, id] : m_rows)
    if (QAccessible::accessibleInterface(id) == child) return row;
  return -1;
}

QAccessibleInterface* AccessibleTimeline::childAt(int x, int y) const {
  return child(view().rowAt(view().viewport()->mapFromGlobal(QPoint(x, y))));
}

QAccessibleInterface* AccessibleTimeline::focusChild() const {
  return view().hasFocus() ? child(view().currentRow()) : nullptr;
}

}  // namespace quillo
