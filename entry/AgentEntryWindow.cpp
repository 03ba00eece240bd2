#include "entry/AgentEntryWindow.h"

#include "controls/Coordinates.h"
#include "controls/Fonts.h"
#include "entry/session/JournalAccess.h"
#include "platform/QtInternals.h"
#include "ui_AgentEntryWindow.h"

#include <QAccessibleWidget>
#include <QCloseEvent>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QPainterPath>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

// Room for the shadow on the left, the right and the side without the arrow, which has to reach the status item.
static constexpr int shadowMargin = 18;

static const QColor titleColor(0xf2, 0xf3, 0xf5);
static const QColor quietColor(0xb9, 0xbe, 0xc6);
static const QColor metadataColor(0x6b, 0x6a, 0x64);

// What stays free around the text inside its area, in points.
static constexpr double textMargin = 3.0;

// A window manager's border may shift the window by as much, in points from the left and the top together.
static constexpr int borderAllowance = 8;

static void setLabelLook(QLabel& label, const QFont& font, const QColor& color) {
  label.setFont(font);
  QPalette palette = label.palette();
  palette.setColor(QPalette::WindowText, color);
  label.setPalette(palette);
}

// A tool window says nothing of what it is; a screen reader reads a dialog out when it opens.
static QAccessibleInterface* dialogFor(const QString& className, QObject* object) {
  if (className != QLatin1StringView(AgentEntryWindow::staticMetaObject.className())) return nullptr;
  return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::Dialog);
}

AgentEntryWindow::AgentEntryWindow(EntryWindowDesktop desktop)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_ui(std::make_unique<Ui::AgentEntryWindow>()),
      m_content(new QWidget(this)),
      m_desktop(std::move(desktop)) {
  // Before anything that tells screen readers of the window: the first question decides what it is to them.
  QAccessible::installFactory(&dialogFor);
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_QuitOnClose, false);
  m_ui->setupUi(m_content);
  setObjectName(u"AgentEntryWindow"_s);
  setWindowTitle(m_content->windowTitle());
  setAccessibleName(u"Quillo entry"_s);

  awakeFromNib();
  if (m_desktop.placement == WindowPlacement::Compositor) m_ui->backgroundView->setShowsArrow(false);
  layOut();
}

AgentEntryWindow::~AgentEntryWindow() = default;

void AgentEntryWindow::awakeFromNib() {
  m_ui->newEntryIcon->setNinePartScaledImage(Image::imageNamed(u"menubar-new-entry"_s));
  m_ui->reminderIcon->setNinePartScaledImage(Image::imageNamed(u"menubar-reminder"_s));
  setLabelLook(*m_ui->headerTitle, textFont(13, QFont::DemiBold), titleColor);
  setLabelLook(*m_ui->reconnectTitle, textFont(14, QFont::DemiBold), titleColor);
  setLabelLook(*m_ui->reconnectReason, textFont(12), titleColor);
  setLabelLook(*m_ui->reconnectAboutText, textFont(12), quietColor);
  // Narrower, so that its last word does not stand alone.
  m_ui->reconnectAboutText->setContentsMargins(30, 0, 30, 0);
  setLabelLook(*m_ui->snoozeTitle, textFont(12), quietColor);
  setLabelLook(*m_ui->locationField, textFont(11), metadataColor);
  m_ui->locationIcon->setNinePartScaledImage(Image::imageNamed(u"menubar-location"_s));
  m_ui->locationIndicatorView->setNinePartScaledImage(Image::imageNamed(u"menubar-location-pin"_s));
  for (QWidget* decoration : {static_cast<QWidget*>(m_ui->locationIcon),
                              static_cast<QWidget*>(m_ui->locationToggleImage), m_ui->contextualMenuFrame})
    decoration->setAttribute(Qt::WA_TransparentForMouseEvents);

  m_ui->backgroundView->onChange = [this] {
    m_background.invalidate();
    update();
  };
  m_textAreaHeight = m_ui->scrollBorderView->height();
  m_textContentFrame = flipped(m_ui->textView->geometry(), m_textAreaHeight);
  m_ui->scrollBorderView->installEventFilter(this);
  m_ui->locationField->clear();
  // Ends with the switch; there is nothing to unregister.
  connect(m_ui->locationToggleButton, &QAbstractButton::toggled, this, [this](bool on) {
    updateLocationIconState();
    setShowsMetadata(on);
  });
  updateLocationIconState();
}

void AgentEntryWindow::setScrollBorderFrame(const QRectF& frame) {
  m_ui->scrollBorderView->setGeometry(flipped(frame, frameSize.height()).toRect());
}

bool AgentEntryWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_ui->scrollBorderView && event->type() == QEvent::Resize) layOutTextArea();
  return QWidget::eventFilter(watched, event);
}

void AgentEntryWindow::layOutTextArea() {
  // The margins stay; the height is the text's. Compared with the last layout, as the first event after the window was
  // made knows no size before.
  const int height = m_ui->scrollBorderView->height();
  m_textContentFrame.setHeight(m_textContentFrame.height() + height - m_textAreaHeight);
  m_textAreaHeight = height;
  m_ui->textView->setGeometry(flipped(m_textContentFrame, height).toRect());
  QWidget& band = *m_ui->metadataBackgroundBox;
  band.move(band.x(), height - band.height());
}

void AgentEntryWindow::setEntryMetadataText(const QString& text) {
  m_entryMetadataText = text;
  QLabel& field = *m_ui->locationField;
  const QString shown = field.fontMetrics().elidedText(text, Qt::ElideRight, field.width());
  field.setText(shown);
  field.setToolTip(shown == text ? QString() : text);
  // Takes the place of the text for a screen reader, so it holds all of it.
  field.setAccessibleName(text.isEmpty() ? QString() : u"Place and weather: "_s + text);
  updateLocationIconState();
}

void AgentEntryWindow::updateLocationIconState() {
  const bool on = m_ui->locationToggleButton->isChecked();
  m_ui->locationIndicatorView->setVisible(!m_entryMetadataText.isEmpty() || m_showsLocationSpinner);
  setShowsMetadata(on);
  m_ui->locationToggleImage->setNinePartScaledImage(
      Image::imageNamed(on ? u"menubar-location-toggle-on"_s : u"menubar-location-toggle-off"_s));
}

void AgentEntryWindow::setShowsLocationSpinner(bool shows) {
  m_showsLocationSpinner = shows;
  if (shows)
    m_ui->locationSpinner->startAnimation();
  else
    m_ui->locationSpinner->stopAnimation();
  updateLocationIconState();
}

void AgentEntryWindow::setShowsMetadata(bool shows) {
  if (shows == m_showsMetadata) return;
  m_showsMetadata = shows;
  QWidget& band = *m_ui->metadataBackgroundBox;
  QRectF& text = m_textContentFrame;
  if (shows) {
    const double bandTop = flipped(band.geometry(), m_ui->scrollBorderView->height()).bottom();
    const double distance = bandTop + textMargin - text.y();
    text = QRectF(text.x(), text.y() + distance, text.width(), text.height() - distance);
  } else {
    // Not the way back: the lower edge does not come down to the margin, it is mirrored about where it was, and the
    // text area loses as much again as the band had taken. The window keeps the look that its users know.
    const double distance = textMargin - text.y();
    text = QRectF(text.x(), text.y() - distance, text.width(), text.height() + distance);
  }
  layOutTextArea();
  band.setVisible(shows);
}

void AgentEntryWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && onActivationChange) onActivationChange();
}

void AgentEntryWindow::layOut() {
  const bool composited = !m_desktop.isComposited || m_desktop.isComposited();
  m_shadowMargin = composited ? shadowMargin : 0;
  const QSize size = frameSize.toSize();
  // With the arrow below, all but the background moves up into the room of an arrow above.
  const int lift =
      m_ui->backgroundView->arrowEdge() == Qt::TopEdge ? 0 : static_cast<int>(EntryBackgroundView::arrowHeight);
  m_content->setGeometry(QRect(frameOffset() - QPoint(0, lift), size + QSize(0, lift)));
  m_ui->backgroundView->setGeometry(QRect(QPoint(0, lift), size));
  setFixedSize(size.width() + 2 * m_shadowMargin, size.height() + m_shadowMargin);
  if (composited) {
    clearMask();
    m_maskOutline.clear();
  } else if (const QPainterPath& outline = m_ui->backgroundView->outline(); outline != m_maskOutline) {
    // Not by filling a bitmap: Qt starts threads for a shape of this size.
    setMask(QRegion(outline.toFillPolygon().toPolygon()));
    m_maskOutline = outline;
  }
  setFrameOrigin(m_origin);
}

QPoint AgentEntryWindow::frameOffset() const {
  return {m_shadowMargin, m_ui->backgroundView->arrowEdge() == Qt::TopEdge ? 0 : m_shadowMargin};
}

QRectF AgentEntryWindow::frame() const {
  return {m_origin, frameSize};
}

void AgentEntryWindow::setFrameOrigin(QPointF origin) {
  m_origin = origin;
  const QRectF onScreen = flipped(frame(), mainScreenHeight());
  m_askedPosition =
      QPoint(static_cast<int>(std::lround(onScreen.x())), static_cast<int>(std::lround(onScreen.y()))) - frameOffset();
  move(m_askedPosition);
}

void AgentEntryWindow::setPlace(QPointF origin, Qt::Edge edge, double arrowX) {
  const QPainterPath before = m_ui->backgroundView->outline();
  m_ui->backgroundView->setArrowEdge(edge);
  m_ui->backgroundView->setArrowX(arrowX - origin.x());
  // The shape follows the arrow, and the window may be cut to it.
  if (before != m_ui->backgroundView->outline()) layOut();
  setFrameOrigin(origin);
}

void AgentEntryWindow::setShowsArrow(bool shows) {
  if (m_ui->backgroundView->showsArrow() == shows) return;
  m_ui->backgroundView->setShowsArrow(shows);
  layOut();
}

void AgentEntryWindow::moveEvent(QMoveEvent* event) {
  QWidget::moveEvent(event);
  // As the window manager tells it, after the window is shown; what it did once, it is expected to do again.
  if (m_desktop.placement != WindowPlacement::WindowManager || !event->spontaneous()) return;
  setShowsArrow((event->pos() - m_askedPosition).manhattanLength() <= borderAllowance);
}

void AgentEntryWindow::setJournalPanel(const JournalPanel& panel, const QString& aboutText) {
  m_ui->reconnectTitle->setText(panel.title);
  m_ui->reconnectReason->setText(panel.reason);
  m_ui->reconnectAboutText->setText(aboutText);
  m_ui->reconnectAboutText->setVisible(!aboutText.isEmpty());
  const bool reconnects = panel.offer == JournalPanel::Offer::Reconnect;
  m_ui->reconnectButton->setVisible(reconnects);
  m_ui->setUpButton->setVisible(!reconnects);
  m_ui->chooseJournalButton->setVisible(!reconnects);
  m_ui->createJournalButton->setVisible(!reconnects);
  const bool exists = panel.offer == JournalPanel::Offer::UseOrChoose;
  const QString title = exists ? u"Use Journal"_s : u"Create Journal"_s;
  m_ui->createJournalButton->setText(title);
  m_ui->createJournalButton->setAccessibleName(title);
  // Has the keyboard when it is shown, so a screen reader begins with all of it; in one go, without the places to
  // break.
  m_ui->reconnectView->setAccessibleName(
      QStringList{panel.title + u'.', panel.reason, aboutText}.join(u' ').remove(QChar(0x200b)).trimmed());
}

static QList<QDialog*> sheetsOf(const QWidget& window) {
  QList<QDialog*> sheets = window.findChildren<QDialog*>(Qt::FindDirectChildrenOnly);
  sheets.removeIf([](const QDialog* dialog) { return !dialog->isVisible(); });
  return sheets;
}

bool AgentEntryWindow::hasAttachedSheet() const {
  return !sheetsOf(*this).isEmpty();
}

void AgentEntryWindow::endSheets() {
  for (QDialog* sheet : sheetsOf(*this)) {
    // Hidden, not closed: that would be an answer.
    sheet->hide();
    sheet->deleteLater();
  }
}

void AgentEntryWindow::orderOut() {
  endSheets();
  hide();
}

void AgentEntryWindow::orderFront(bool activate) {
  layOut();
  setAttribute(Qt::WA_ShowWithoutActivating, !activate);
  // Qt passes the attribute on once only, when it makes the window; a window that was shown for the user
  // before would take the keyboard when it is shown for a reminder.
  if (QWindow* handle = windowHandle()) handle->setProperty(QtInternals::showWithoutActivating, !activate);
  // Window managers forget it each time the window goes.
  if (m_desktop.keepOutOfTaskBar) m_desktop.keepOutOfTaskBar(winId());
  if (!activate && m_desktop.leaveKeyboard) {
    winId();
    m_desktop.leaveKeyboard(*windowHandle());
  }
  show();
  raise();
  // The editor is hidden while the journal cannot be reached. No button gets the keyboard then: the panel appears under
  // somebody who is typing, and a space would press it. Where the window leaves the keyboard alone, this takes effect
  // with the first click anywhere in it.
  QWidget* const first = m_ui->textView->isVisible() ? static_cast<QWidget*>(m_ui->textView) : m_ui->reconnectView;
  first->setFocus();
  if (activate) activateWindow();
}

void AgentEntryWindow::makeKeyAndOrderFront() {
  raise();
  activateWindow();
}

void AgentEntryWindow::paintEvent(QPaintEvent*) {
  m_background.paint(*this, [this](QPainter& painter) {
    if (m_shadowMargin > 0) {
      painter.save();
      drawShadow(painter);
      painter.restore();
    }
    painter.translate(frameOffset());
    m_ui->backgroundView->draw(painter);
  });
}

void AgentEntryWindow::drawShadow(QPainter& painter) const {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  // A soft shadow as rings of little alpha.
  const bool isBelow = m_ui->backgroundView->arrowEdge() == Qt::TopEdge;
  const double arrow = EntryBackgroundView::arrowHeight;
  const QRectF frame(frameOffset(), frameSize);
  const QRectF body = frame.adjusted(0, isBelow ? arrow : 0, 0, isBelow ? 0 : -arrow);
  const double roomBelow = isBelow ? m_shadowMargin : arrow;
  // Around the body only, which lets a little of what is behind the window through.
  QPainterPath around;
  around.addRect(rect());
  painter.setClipPath(around - m_ui->backgroundView->outline().translated(frame.topLeft()));
  for (int i = m_shadowMargin; i > 0; --i) {
    const double fade = 1.0 - static_cast<double>(i) / m_shadowMargin;
    painter.setBrush(QColor(0, 0, 0, static_cast<int>(1 + 10 * fade * fade)));
    painter.drawRoundedRect(body.adjusted(-i, -i + 8, i, std::min<double>(i, roomBelow)), 8 + i, 8 + i);
  }
}

void AgentEntryWindow::closeEvent(QCloseEvent* event) {
  // The desktop's way to close a window goes the way of the close button, which may leave it up for an alert.
  if (onCloseRequest) onCloseRequest();
  event->setAccepted(!isVisible());
}

void AgentEntryWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier && onEscape)
    onEscape();
  else
    QWidget::keyPressEvent(event);
}

}  // namespace quillo
