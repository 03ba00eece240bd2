#include "about/AboutWindowController.h"
#include "about/LegalWindowController.h"
#include "about/ProductInformation.h"
#include "controls/CustomCursorButton.h"
#include "foundation/FileContents.h"
#include "platform/Workspace.h"
#include "tests/support/TestHome.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

struct FakeWorkspace : Workspace {
  bool openURL(const QUrl& url) override {
    opened << url.toString();
    return false;
  }
  std::optional<QUrl> urlForApplication(const QString&) const override { return std::nullopt; }
  bool launchApplication(const QString&) override { return false; }
  QStringList opened;
};

class AboutWindowTest : public testing::Test {
 protected:
  template <typename Kind>
  Kind& child(const char* name) {
    return *about.window().findChild<Kind*>(QString::fromLatin1(name));
  }
  static Bundle bundle(const QString& root = u":/quillo"_s) { return {root, {{InfoKey::shortVersion, u"2.0.7"_s}}}; }

  TestHome home;
  FakeWorkspace workspace;
  AboutWindowController about{workspace, bundle()};
};

TEST_F(AboutWindowTest, TellsTheVersionInTheUsersLanguageWhereThereIsOne) {
  EXPECT_EQ(child<QLabel>("versionText").text(), u"Version: 2.0.7"_s);
  ASSERT_TRUE(QDir().mkpath(home.path(u"en.lproj"_s)));
  ASSERT_TRUE(writeFileInPlace(home.path(u"en.lproj/InfoPlist.strings"_s), "CFBundleShortVersionString = \"Two\";"));
  const AboutWindowController localized(workspace, bundle(home.path()));
  EXPECT_EQ(localized.infoValueForKey(InfoKey::shortVersion)->string(),
            QLocale::system().uiLanguages().first().startsWith(u"en"_s) ? u"Two"_s : u"2.0.7"_s);
  EXPECT_FALSE(localized.infoValueForKey(u"Missing"_s));
}

TEST_F(AboutWindowTest, TheCreditsAreThreeCentredLinesWithFourLinks) {
  QTextDocument& document = *about.creatorText().document();
  const QString handle[] = {ProductInformation::product.handle, ProductInformation::designer.handle,
                            ProductInformation::firstDeveloper.handle, ProductInformation::secondDeveloper.handle};
  EXPECT_EQ(document.toPlainText(),
            handle[0] + u"\ndesigned by "_s + handle[1] + u"\ndeveloped by "_s + handle[2] + u" and "_s + handle[3]);
  QStringList links;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    EXPECT_EQ(block.blockFormat().alignment(), Qt::AlignHCenter);
    for (auto piece = block.begin(); !piece.atEnd(); ++piece) {
      const QTextCharFormat format = piece.fragment().charFormat();
      if (!format.isAnchor()) continue;
      EXPECT_TRUE(piece.fragment().text().startsWith(u'@'));
      links << format.anchorHref();
    }
  }
  EXPECT_EQ(links.size(), 4);
  // All of it is to be seen.
  const QRect frame = about.creatorText().geometry();
  EXPECT_GE(frame.height(), document.size().height());
  EXPECT_FALSE(frame.intersects(child<QLabel>("versionText").geometry()));

  // The first line's middle is the product's handle.
  about.showWindow();
  QTest::mouseClick(about.creatorText().viewport(), Qt::LeftButton, {}, QPoint(125, 6));
  EXPECT_EQ(workspace.opened, QStringList{QString(ProductInformation::product.page)});
}

TEST_F(AboutWindowTest, LinksStayReadableOnADarkDesktop) {
  QPalette dark;
  dark.setColor(QPalette::Window, QColor(0x2a, 0x2d, 0x33));
  dark.setColor(QPalette::WindowText, QColor(0xee, 0xee, 0xee));
  about.window().setPalette(dark);
  QApplication::processEvents();
  const auto& title = child<CustomCursorButton>("legalButton").buttonCell().attributedTitle();
  EXPECT_EQ(title.string, u"Legal"_s);
  EXPECT_GT(title.attributes.foregroundColor.lightness(), 140);
  const QTextCharFormat link = about.creatorText().document()->begin().begin().fragment().charFormat();
  EXPECT_EQ(link.foreground().color(), title.attributes.foregroundColor);
}

TEST_F(AboutWindowTest, TheLogosOpenTheSitesAndNeverLookPressed) {
  about.showWindow();
  const struct {
    const char* name;
    QLatin1StringView site;
  } rows[] = {{"appLogoButton", ProductInformation::productSite}, {"brandLogoButton", ProductInformation::makerSite}};
  for (const auto& row : rows) {
    auto& button = child<CustomCursorButton>(row.name);
    EXPECT_EQ(button.cursor().shape(), Qt::PointingHandCursor);
    const QImage before = button.grab().toImage();
    QTest::mousePress(&button, Qt::LeftButton);
    EXPECT_EQ(button.grab().toImage(), before) << row.name;
    QTest::mouseRelease(&button, Qt::LeftButton);
    EXPECT_EQ(workspace.opened.last(), QString(row.site));
  }
}

TEST_F(AboutWindowTest, TheKeyboardReachesBothLogosFourLinksAndTheLegalText) {
  about.showWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&about.window()));
  for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab}) {
    child<CustomCursorButton>("brandLogoButton").setFocus();
    for (int stop = 0; stop < 7; ++stop) QTest::keyClick(QApplication::focusWidget(), key);
    EXPECT_EQ(QApplication::focusWidget(), &child<CustomCursorButton>("brandLogoButton"));
  }
}

TEST_F(AboutWindowTest, ShownAgainItIsTheSameWindowWhereItWas) {
  about.showWindow();
  EXPECT_TRUE(QTest::qWaitForWindowActive(&about.window()));
  about.window().move(40, 30);
  QTest::keyClick(&about.window(), Qt::Key_Escape);
  EXPECT_FALSE(about.window().isVisible());
  about.showWindow();
  EXPECT_TRUE(about.window().isVisible());
  EXPECT_EQ(about.window().pos(), QPoint(40, 30));
}

TEST_F(AboutWindowTest, TheLegalSheetComesBackUntilItIsClosed) {
  about.showWindow();
  auto& button = child<CustomCursorButton>("legalButton");
  QTest::mouseClick(&button, Qt::LeftButton);
  LegalWindowController* const sheet = about.legalSheet();
  ASSERT_TRUE(sheet);
  EXPECT_TRUE(sheet->window().isVisible());
  EXPECT_EQ(sheet->window().windowModality(), Qt::WindowModal);
  const QString text = sheet->textView().toPlainText();
  EXPECT_TRUE(text.contains(u"GeoNames"_s));

  sheet->window().findChild<QPushButton*>(u"closeButton"_s)->click();
  EXPECT_FALSE(sheet->window().isVisible());
  about.legalButtonClicked();
  EXPECT_EQ(about.legalSheet(), sheet);
  EXPECT_TRUE(sheet->window().isVisible());
  // The other ways to close it.
  QTest::keyClick(&sheet->textView(), Qt::Key_Escape);
  EXPECT_FALSE(sheet->window().isVisible());
  about.legalButtonClicked();
  sheet->window().close();
  about.legalButtonClicked();
  EXPECT_TRUE(sheet->window().isVisible());
}

TEST_F(AboutWindowTest, ALegalTextThatIsMissingOrNoASCIIIsEmpty) {
  const Bundle own = bundle(home.path());
  EXPECT_EQ(LegalWindowController(own).textView().toPlainText(), QString());
  const QString path = home.path(u"LegalAcknowledgements.txt"_s);
  ASSERT_TRUE(writeFileInPlace(path, "plain\n"));
  EXPECT_EQ(LegalWindowController(own).textView().toPlainText(), u"plain\n"_s);
  ASSERT_TRUE(writeFileInPlace(path, "plain \xc3\xbc\n"));
  EXPECT_EQ(LegalWindowController(own).textView().toPlainText(), QString());
}

}  // namespace
}  // namespace quillo
