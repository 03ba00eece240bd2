#include "journal/views/SidebarList.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <optional>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

enum Role { SectionRole = Qt::UserRole, ItemRole, CountRole };

// In points.
constexpr int headingHeight = 30;
constexpr int itemHeight = 28;
constexpr int margin = 9;

class Delegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override {
    return {80, index.data(ItemRole).isNull() ? headingHeight : itemHeight};
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const JournalColors colors = JournalColors::current();
    const bool isHeading = index.data(ItemRole).isNull();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (!isHeading && (option.state & QStyle::State_Selected)) {
      painter->setPen(Qt::NoPen);
      painter->setBrush(colors.shade);
      painter->drawRoundedRect(QRectF(option.rect).adjusted(0, 1, 0, -1), 5, 5);
    }
    if (option.state & QStyle::State_HasFocus) {
      painter->setPen(QPen(colors.accent, 2));
      painter->setBrush(Qt::NoBrush);
      painter->drawRoundedRect(QRectF(option.rect).adjusted(1, 2, -1, -2), 5, 5);
    }
    const Qt::Alignment start = option.direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    const Qt::Alignment end = option.direction == Qt::RightToLeft ? Qt::AlignLeft : Qt::AlignRight;
    QRect rect = option.rect.adjusted(margin, isHeading ? 6 : 0, -margin, 0);
    painter->setFont(isHeading ? textFont(11, QFont::DemiBold) : textFont(13));
    painter->setPen(colors.dim);
    const QString count = index.data(CountRole).toString();
    painter->drawText(rect, static_cast<int>(end | Qt::AlignVCenter), count);
    const int countWidth = count.isEmpty() ? 0 : painter->fontMetrics().horizontalAdvance(count) + 8;
    if (option.direction == Qt::RightToLeft)
      rect.setLeft(rect.left() + countWidth);
    else
      rect.setRight(rect.right() - countWidth);
    if (!isHeading) painter->setPen(colors.text);
    const QString name =
        painter->fontMetrics().elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideRight, rect.width());
    painter->drawText(rect, static_cast<int>(start | Qt::AlignVCenter), name);
    painter->restore();
  }
};

}  // namespace

SidebarList::SidebarList(QWidget* parent) : QListWidget(parent) {
  setFrameStyle(QFrame::NoFrame);
  setItemDelegate(new Delegate(this));
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollMode(ScrollPerPixel);
  setAccessibleName(u"Sidebar"_s);
  applyColors();
  connect(this, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) { activate(*item); });
}

// Not by itemActivated(), which some styles tell of clicks as well: a heading would fold and unfold at once.
void SidebarList::keyPressEvent(QKeyEvent* event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!isReturn || !currentItem()) return QListWidget::keyPressEvent(event);
  activate(*currentItem());
}

void SidebarList::setSections(const QList<SidebarSection>& sections) {
  if (sections == m_sections) return;
  m_sections = sections;
  fill();
}

void SidebarList::fill() {
  const QListWidgetItem* before = currentItem();
  const QVariant kept = before ? before->data(ItemRole) : QVariant();
  const QString keptName = before ? before->text() : QString();
  const QList<QListWidgetItem*> chosen = selectedItems();
  const bool wasChosen = !chosen.isEmpty() && chosen.first() == before;
  clear();
  for (const SidebarSection& section : std::as_const(m_sections)) {
    if (section.items.isEmpty()) continue;
    const bool isFolded = m_folded.contains(section.title);
    auto* heading = new QListWidgetItem(section.title.toUpper() + (isFolded ? u"  \u203A"_s : QString()), this);
    heading->setFlags(Qt::ItemIsEnabled);
    heading->setData(SectionRole, section.title);
    heading->setData(Qt::AccessibleTextRole, section.title + (isFolded ? u", folded"_s : QString()));
    if (isFolded) continue;
    for (const SidebarItem& item : section.items) {
      auto* row = new QListWidgetItem(item.name, this);
      row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
      row->setData(ItemRole, static_cast<int>(item.kind));
      const QString count = item.count < 0 ? QString() : locale().toString(item.count);
      row->setData(CountRole, count);
      row->setData(Qt::AccessibleTextRole, count.isEmpty() ? item.name : u"%1, %2"_s.arg(item.name, count));
      if (kept.isNull() || kept != row->data(ItemRole) || keptName != item.name) continue;
      setCurrentItem(row, wasChosen ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate);
    }
  }
}

void SidebarList::setChosen(const SidebarItem* item) {
  clearSelection();
  if (!item) return;
  for (int i = 0; i < count(); ++i) {
    QListWidgetItem* row = this->item(i);
    if (row->data(ItemRole) == static_cast<int>(item->kind) && row->text() == item->name)
      return setCurrentItem(row, QItemSelectionModel::ClearAndSelect);
  }
}

void SidebarList::activate(const QListWidgetItem& item) {
  if (const QVariant section = item.data(SectionRole); !section.isNull()) {
    const QString title = section.toString();
    if (!m_folded.remove(title)) m_folded.insert(title);
    // The item is one of those that are made anew.
    QMetaObject::invokeMethod(this, &SidebarList::fill, Qt::QueuedConnection);
    return;
  }
  Q_EMIT itemChosen({static_cast<SidebarItem::Kind>(item.data(ItemRole).toInt()), item.text(), -1});
}

void SidebarList::applyColors() {
  QPalette own = palette();
  own.setColor(QPalette::Base, Qt::transparent);
  if (own != palette()) setPalette(own);
  viewport()->setAutoFillBackground(false);
}

}  // namespace quillo
