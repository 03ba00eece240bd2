#include "journal/editor/LineSpacing.h"

#include <QPlainTextDocumentLayout>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextLayout>
#include <QTextOption>

namespace quillo {

namespace {

// The layout of a plain text knows no line height. It asks for a block's rectangle wherever it needs a block laid out,
// and the lines are moved apart then.
class SpacedLayout : public QPlainTextDocumentLayout {
 public:
  SpacedLayout(QTextDocument* document, double spacing) : QPlainTextDocumentLayout(document), m_spacing(spacing) {}

  [[nodiscard]] QRectF blockBoundingRect(const QTextBlock& block) const override {
    QRectF rect = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (!block.isValid() || rect.isEmpty()) return rect;
    QTextLayout& layout = *block.layout();
    alignAsScript(block, layout);
    double y = 0;
    for (int i = 0; i < layout.lineCount(); ++i) {
      QTextLine line = layout.lineAt(i);
      const double height = line.height() * m_spacing;
      // Text stands in the middle of its line.
      const QPointF place(line.x(), y + (height - line.height()) / 2);
      if (line.position() != place) line.setPosition(place);
      y += height;
    }
    if (layout.lineCount() > 0) rect.setHeight(y);
    return rect;
  }

 private:
  // Nor does it put a paragraph at the side where its script begins.
  static void alignAsScript(const QTextBlock& block, QTextLayout& layout) {
    QTextOption option = layout.textOption();
    const auto side = block.textDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    if (option.alignment() == side) return;
    option.setAlignment(side);
    layout.setTextOption(option);
  }

  double m_spacing;
};

}  // namespace

void setLineSpacing(QPlainTextEdit& view, double spacing) {
  QTextDocument* document = view.document();
  document->setDocumentLayout(new SpacedLayout(document, spacing));
}

}  // namespace quillo
