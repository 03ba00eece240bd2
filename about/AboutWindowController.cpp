#include "about/AboutWindowController.h"

#include "about/CreditsView.h"
#include "about/LegalWindowController.h"
#include "about/LinkStyle.h"
#include "about/ProductInformation.h"
#include "about/ProgramIdentity.h"
#include "controls/Coordinates.h"
#include "controls/CustomCursorButton.h"
#include "controls/Fonts.h"
#include "platform/Workspace.h"
#include "ui_AboutWindow.h"

#include <QEvent>
#include <QGuiApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>

#include <cmath>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

// Of the credits, from the bottom left of the window. The block grows upwards from there with its lines.
static constexpr QRectF creatorFrame{17.0, 160.0, 250.0, 16.0};

AboutWindowController::AboutWindowController(Workspace& workspace, Bundle bundle)
    : m_workspace(workspace),
      m_bundle(std::move(bundle)),
      m_window(std::make_unique<QWidget>(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                                      Qt::WindowCloseButtonHint | Qt::WindowSystemMenuHint)),
      m_ui(std::make_unique<Ui::AboutWindow>()) {
  awakeFromNib();
}

AboutWindowController::~AboutWindowController() {
  m_window->removeEventFilter(this);
  // Before the window, which may be its parent.
  m_legalSheet.reset();
}

void AboutWindowController::awakeFromNib() {
  m_ui->setupUi(m_window.get());
  m_window->setFixedSize(m_window->size());
  m_window->setWindowIcon(programIcon());
  m_window->installEventFilter(this);

  QFont titleFont = textFont(20, QFont::DemiBold);
  titleFont.setLetterSpacing(QFont::AbsoluteSpacing, -0.2);
  m_ui->nameText->setFont(titleFont);
  m_ui->versionText->setFont(textFont(11));
  m_ui->copyrightText->setFont(aboutFont());
  const auto version = infoValueForKey(InfoKey::shortVersion);
  m_ui->versionText->setText(u"Version: "_s + (version ? version->string() : u"(null)"_s));
  if (const auto copyright = infoValueForKey(InfoKey::copyright)) m_ui->copyrightText->setText(copyright->string());

  makeCreatorText();
  styleLinks();
  for (CustomCursorButton* button : {m_ui->legalButton, m_ui->appLogoButton, m_ui->brandLogoButton}) {
    button->setCustomCursor(QCursor(Qt::PointingHandCursor));
    button->buttonCell().setBordered(false);
  }
  for (CustomCursorButton* logo : {m_ui->appLogoButton, m_ui->brandLogoButton}) {
    logo->buttonCell().setShowsStateBy(NoCellMask);
    logo->buttonCell().setHighlightsBy(NoCellMask);
  }
  connect(m_ui->legalButton, &QAbstractButton::clicked, this, &AboutWindowController::legalButtonClicked);
  connect(m_ui->appLogoButton, &QAbstractButton::clicked, this, &AboutWindowController::appLogoButtonClicked);
  connect(m_ui->brandLogoButton, &QAbstractButton::clicked, this, &AboutWindowController::brandLogoButtonClicked);
}

void AboutWindowController::makeCreatorText() {
  m_creatorText = new CreditsView(m_window.get());
  m_creatorText->setObjectName(u"creatorText"_s);
  m_creatorText->setAccessibleName(u"Credits"_s);
  m_creatorText->setFrameStyle(QFrame::NoFrame);
  m_creatorText->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  m_creatorText->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  m_creatorText->viewport()->setAutoFillBackground(false);
  m_creatorText->setReadOnly(true);
  m_creatorText->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  m_creatorText->document()->setDocumentMargin(0);
  // The workspace knows the programs; the view would ask Qt.
  m_creatorText->setOpenLinks(false);
  connect(m_creatorText, &QTextBrowser::anchorClicked, this, [this](const QUrl& url) { m_workspace.openURL(url); });
  m_creatorText->setGeometry(flipped(creatorFrame, m_window->height()).toRect());
  fillCreatorText();
  QRectF frame = creatorFrame;
  m_creatorText->document()->setTextWidth(frame.width());
  frame.setHeight(std::max(frame.height(), std::ceil(m_creatorText->document()->size().height())));
  m_creatorText->setGeometry(flipped(frame, m_window->height()).toRect());
  m_creatorText->raise();
  QWidget::setTabOrder(m_ui->appLogoButton, m_creatorText);
  QWidget::setTabOrder(m_creatorText, m_ui->legalButton);
}

void AboutWindowController::fillCreatorText() {
  const LinkStyle style = LinkStyle::forPalette(m_window->palette());
  QTextCharFormat plain;
  plain.setFont(aboutFont());
  plain.setForeground(m_window->palette().windowText());
  const auto link = [&](const ProductInformation::Profile& profile) {
    QTextCharFormat format = plain;
    format.setFont(style.font);
    format.setAnchor(true);
    format.setAnchorHref(QString(profile.page));
    format.setForeground(style.foregroundColor);
    format.setFontUnderline(false);
    return std::pair(QString(profile.handle), format);
  };
  m_creatorText->clear();
  QTextCursor cursor(m_creatorText->document());
  QTextBlockFormat paragraph;
  paragraph.setAlignment(Qt::AlignHCenter);
  paragraph.setLineHeight(LinkStyle::lineSpacing, QTextBlockFormat::LineDistanceHeight);
  cursor.beginEditBlock();
  cursor.setBlockFormat(paragraph);
  const auto insert = [&cursor](const std::pair<QString, QTextCharFormat>& piece) {
    cursor.insertText(piece.first, piece.second);
  };
  insert(link(ProductInformation::product));
  insert({u"\ndesigned by "_s, plain});
  insert(link(ProductInformation::designer));
  insert({u"\ndeveloped by "_s, plain});
  insert(link(ProductInformation::firstDeveloper));
  insert({u" and "_s, plain});
  insert(link(ProductInformation::secondDeveloper));
  cursor.endEditBlock();
  // Filling it leaves the view scrolled to the end.
  m_creatorText->moveCursor(QTextCursor::Start);
}

void AboutWindowController::styleLinks() {
  const LinkStyle style = LinkStyle::forPalette(m_window->palette());
  m_ui->legalButton->buttonCell().setAttributedTitle({u"Legal"_s, {style.font, style.foregroundColor, std::nullopt}});
  // Secondary text: quieter than the name, still readable on either ground.
  QColor quiet = m_window->palette().color(QPalette::WindowText);
  quiet.setAlphaF(0.72F);
  for (QLabel* label : {m_ui->versionText, m_ui->copyrightText}) {
    QPalette palette = label->palette();
    if (palette.color(QPalette::WindowText) == quiet) continue;
    palette.setColor(QPalette::WindowText, quiet);
    label->setPalette(palette);
  }
}

std::optional<PropertyListValue> AboutWindowController::infoValueForKey(const QString& key) const {
  auto plain = m_bundle.objectForInfoDictionaryKey(key);
  // No key reads like its own name, so that this means that no language has it.
  const QString localized = m_bundle.localizedStringForKey(key, key, u"InfoPlist"_s);
  if (localized != key) return PropertyListValue(localized);
  return plain;
}

void AboutWindowController::showWindow() {
  // In the middle of the screen, a little above, the first time; later where the user left it.
  if (!m_window->testAttribute(Qt::WA_Moved)) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect();
    m_window->move(area.x() + (area.width() - m_window->width()) / 2,
                   area.y() + std::max(0, (area.height() - m_window->height()) / 3));
  }
  if (m_window->isMinimized()) m_window->showNormal();
  m_window->show();
  m_window->raise();
  m_window->activateWindow();
}

void AboutWindowController::legalButtonClicked() {
  if (!m_legalSheet) m_legalSheet = std::make_unique<LegalWindowController>(m_bundle);
  m_legalSheet->beginSheet(*m_window, [this](int returnCode) { didEndSheet(returnCode); });
}

void AboutWindowController::didEndSheet(int) {
  m_legalSheet->orderOut();
  m_window->activateWindow();
}

void AboutWindowController::appLogoButtonClicked() {
  m_workspace.openURL(QUrl(QString(ProductInformation::productSite)));
}

void AboutWindowController::brandLogoButtonClicked() {
  m_workspace.openURL(QUrl(QString(ProductInformation::makerSite)));
}

bool AboutWindowController::eventFilter(QObject* watched, QEvent* event) {
  if (watched == m_window.get()) {
    if (event->type() == QEvent::PaletteChange) {
      fillCreatorText();
      styleLinks();
    }
    if (event->type() == QEvent::KeyPress) {
      const auto* key = static_cast<QKeyEvent*>(event);
      if (key->key() == Qt::Key_Escape || key->matches(QKeySequence::Close)) {
        m_window->close();
        return true;
      }
    }
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace quillo
