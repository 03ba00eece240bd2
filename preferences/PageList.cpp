#include "preferences/PageList.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"

#include <QPainter>
#include <QStyledItemDelegate>

namespace quillo {

namespace {

// In points.
constexpr int rowHeight = 32;
constexpr int margin = 10;

class Delegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
    return {80, rowHeight};
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const JournalColors colors = JournalColors::current();
    const bool isChosen = (option.state & QStyle::State_Selected) != 0;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF row = QRectF(option.rect).adjusted(0, 1, 0, -1);
    if (isChosen) {
      painter->setPen(Qt::NoPen);
      painter->setBrush(colors.accent);
      painter->drawRoundedRect(row, 6, 6);
    }
    if (option.state & QStyle::State_HasFocus) {
      painter->setPen(QPen(isChosen ? colors.accentText : colors.accent, 1.5));
      painter->setBrush(Qt::NoBrush);
      painter->drawRoundedRect(row.adjusted(2.5, 2.5, -2.5, -2.5), 4, 4);
    }
    painter->setFont(textFont(13));
    painter->setPen(isChosen ? colors.accentText : colors.text);
    const bool isMirrored = option.direction == Qt::RightToLeft;
    painter->drawText(row.adjusted(margin, 0, -margin, 0),
                      int(Qt::AlignVCenter | (isMirrored ? Qt::AlignRight : Qt::AlignLeft)),
                      index.data(Qt::DisplayRole).toString());
    painter->restore();
  }
};

}  // namespace

PageList::PageList(QWidget* parent) : QListWidget(parent) {
  setFrameStyle(QFrame::NoFrame);
  setItemDelegate(new Delegate(this));
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setSelectionMode(SingleSelection);
}

}  // namespace quillo
