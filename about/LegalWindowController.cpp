#include "about/LegalWindowController.h"

#include "ui_LegalWindow.h"

#include <QEvent>
#include <QFile>
#include <QFontDatabase>
#include <QKeyEvent>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

static constexpr int closed = 1;

// Nothing where a byte is no ASCII character.
static QString asciiText(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QByteArray bytes = file.readAll();
  const bool isAscii = std::all_of(bytes.cbegin(), bytes.cend(), [](char c) { return (c & 0x80) == 0; });
  return isAscii ? QString::fromLatin1(bytes) : QString();
}

LegalWindowController::LegalWindowController(Bundle bundle)
    : m_bundle(std::move(bundle)),
      m_window(std::make_unique<QWidget>(nullptr, Qt::Dialog)),
      m_ui(std::make_unique<Ui::LegalWindow>()) {
  m_ui->setupUi(m_window.get());
  m_window->setWindowModality(Qt::WindowModal);
  m_window->installEventFilter(this);
  connect(m_ui->closeButton, &QAbstractButton::clicked, this, &LegalWindowController::closeButtonClicked);
  windowDidLoad();
}

LegalWindowController::~LegalWindowController() {
  m_window->removeEventFilter(this);
  m_window->setParent(nullptr);
}

QPlainTextEdit& LegalWindowController::textView() const {
  return *m_ui->textView;
}

void LegalWindowController::windowDidLoad() {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setPixelSize(11);
  m_ui->textView->setFont(font);
  if (const auto path = m_bundle.pathForResource(u"LegalAcknowledgements"_s, u"txt"_s))
    m_ui->textView->setPlainText(asciiText(*path));
}

void LegalWindowController::beginSheet(QWidget& window, std::function<void(int)> didEnd) {
  if (m_window->isVisible()) return;
  m_didEnd = std::move(didEnd);
  // Of a new parent a window becomes a child unless it is told to stay one.
  if (m_window->parentWidget() != &window) {
    m_window->setParent(&window,
                        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    m_window->setWindowModality(Qt::WindowModal);
  }
  const QRect below = window.geometry();
  m_window->move(below.center().x() - m_window->width() / 2, below.y() + 24);
  m_window->show();
  m_ui->textView->setFocus();
}

void LegalWindowController::orderOut() {
  m_window->hide();
}

void LegalWindowController::closeButtonClicked() {
  if (const auto didEnd = std::exchange(m_didEnd, {})) didEnd(closed);
}

bool LegalWindowController::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_window.get()) {
    if (event->type() == QEvent::Close) closeButtonClicked();
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
      closeButtonClicked();
      return true;
    }
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace quillo
