#include "entry/AgentEntryWindow.h"

#include "controls/Coordinates.h"
#include "controls/Fonts.h"
#include "ui_AgentEntryWindow.h"

#include <QBitmap>
#include <QCloseEvent>
#include <QDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

// Room for the shadow on the left, the right and below; the arrow has to reach the status item above.
static constexpr int shadowMargin = 18;

static const QColor titleColor(0xf2, 0xf3, 0xf5);
static const QColor quietColor(0xb9, 0xbe, 0xc6);

static void setLabelLook(QLabel& label, const QFont& font, const QColor& color) {
  label.setFont(font);
  QPalette palette = label.palette();
  palette.setColor(QPalette::WindowText, color);
  label.setPalette(palette);
}

static double mainScreenHeight() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen ? screen->geometry().height() : 0;
}

static QBitmap outlineMask(const EntryBackgroundView& view) {
  QBitmap mask(view.size());
  mask.clear();
  QPainter painter(&mask);
  painter.fillPath(view.outline(), Qt::color1);
  return mask;
}

AgentEntryWindow::AgentEntryWindow()
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_ui(std::make_unique<Ui::AgentEntryWindow>()),
      m_content(new QWidget(this)) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_QuitOnClose, false);
  m_ui->setupUi(m_content);
  setObjectName(u"AgentEntryWindow"_s);
  setWindowTitle(m_content->windowTitle());
  setAccessibleName(u"Quillo entry"_s);

  m_ui->newEntryIcon->setNinePartScaledImage(Image::imageNamed(u"menubar-new-entry"_s));
  m_ui->reminderIcon->setNinePartScaledImage(Image::imageNamed(u"menubar-reminder"_s));
  setLabelLook(*m_ui->headerTitle, textFont(13, QFont::DemiBold), titleColor);
  setLabelLook(*m_ui->reconnectTitle, textFont(14, QFont::DemiBold), titleColor);
  setLabelLook(*m_ui->reconnectReason, textFont(12), quietColor);
  setLabelLook(*m_ui->reconnectPath, textFont(12, QFont::Medium), titleColor);
  layOut();
}

AgentEntryWindow::~AgentEntryWindow() = default;

void AgentEntryWindow::layOut() {
  const bool composited = !m_isComposited || m_isComposited();
  m_shadowMargin = composited ? shadowMargin : 0;
  const QSize size = frameSize.toSize();
  m_content->setGeometry(m_shadowMargin, 0, size.width(), size.height());
  setFixedSize(size.width() + 2 * m_shadowMargin, size.height() + m_shadowMargin);
  if (composited) {
    clearMask();
    m_maskOutline.clear();
  } else if (const QPainterPath outline = m_ui->backgroundView->outline(); outline != m_maskOutline) {
    setMask(outlineMask(*m_ui->backgroundView));
    m_maskOutline = outline;
  }
  setFrameOrigin(m_origin);
}

QRectF AgentEntryWindow::frame() const {
  return {m_origin, frameSize};
}

void AgentEntryWindow::setFrameOrigin(QPointF origin) {
  m_origin = origin;
  const QRectF onScreen = flipped(frame(), mainScreenHeight());
  move(static_cast<int>(std::lround(onScreen.x())) - m_shadowMargin, static_cast<int>(std::lround(onScreen.y())));
}

void AgentEntryWindow::setArrowScreenX(double x) {
  m_ui->backgroundView->setArrowX(x - m_origin.x());
}

bool AgentEntryWindow::hasAttachedSheet() const {
  const auto dialogs = findChildren<QDialog*>(Qt::FindDirectChildrenOnly);
  return std::any_of(dialogs.begin(), dialogs.end(), [](const QDialog* dialog) { return dialog->isVisible(); });
}

void AgentEntryWindow::orderFront(bool activate) {
  layOut();
  setAttribute(Qt::WA_ShowWithoutActivating, !activate);
  show();
  raise();
  if (!activate) return;
  activateWindow();
  // The editor is hidden while the journal cannot be reached.
  if (m_ui->textView->isVisible())
    m_ui->textView->setFocus();
  else
    m_ui->closeButton->setFocus();
}

void AgentEntryWindow::paintEvent(QPaintEvent*) {
  if (m_shadowMargin == 0) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  // A soft shadow as rings of little alpha; it is painted once a showing, so nothing is cached.
  const QRectF body = QRectF(m_content->geometry()).adjusted(0, EntryBackgroundView::arrowHeight, 0, 0);
  // Around the body only, which lets a little of what is behind the window through.
  QPainterPath around;
  around.addRect(rect());
  painter.setClipPath(around - m_ui->backgroundView->outline().translated(m_content->pos()));
  for (int i = m_shadowMargin; i > 0; --i) {
    const double fade = 1.0 - static_cast<double>(i) / m_shadowMargin;
    painter.setBrush(QColor(0, 0, 0, static_cast<int>(1 + 10 * fade * fade)));
    painter.drawRoundedRect(body.adjusted(-i, -i + 8, i, std::min(i, m_shadowMargin)), 8 + i, 8 + i);
  }
}

void AgentEntryWindow::closeEvent(QCloseEvent* event) {
  // The desktop's way to close a window goes the way of the close button. Accepted, since a refusal would also stop the
  // program from quitting.
  if (onCloseRequest) onCloseRequest();
  event->accept();
}

}  // namespace quillo
