#include "foundation/FileContents.h"
#include "platform/linux/ApplicationDatabase.h"
#include "platform/linux/XdgWorkspace.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

DesktopEntry entryWithExec(const QString& exec) {
  DesktopEntry entry;
  entry.path = u"/apps/a.desktop"_s;
  entry.name = u"A Name"_s;
  entry.exec = exec;
  return entry;
}

TEST(DesktopEntry, MakesACommandLine) {
  const QUrl url(u"quillo://open?a=1&b=;x"_s);
  const QUrl file(u"file:///tmp/a%20b"_s);
  const struct {
    QString exec;
    QUrl url;
    QStringList expected;
  } cases[] = {
      {u"app %u"_s, url, {u"app"_s, u"quillo://open?a=1&b=;x"_s}},
      {u"app  --go\t%U -x"_s, url, {u"app"_s, u"--go"_s, u"quillo://open?a=1&b=;x"_s, u"-x"_s}},
      {u"app --url=%u"_s, url, {u"app"_s, u"--url=quillo://open?a=1&b=;x"_s}},
      {u"app"_s, url, {u"app"_s, u"quillo://open?a=1&b=;x"_s}},
      {u"app %f"_s, file, {u"app"_s, u"/tmp/a b"_s}},
      {u"app %u"_s, file, {u"app"_s, u"file:///tmp/a%20b"_s}},
      {u"app %u %F"_s, {}, {u"app"_s}},
      {u"app \"%u\" \"\""_s, {}, {u"app"_s, u""_s}},
      {u"\"/opt/my app/run\" \"a \\\"b\\\" \\$c\" 100%%"_s, {}, {u"/opt/my app/run"_s, u"a \"b\" $c"_s, u"100%"_s}},
      {u"app %c %k %i %m %"_s, {}, {u"app"_s, u"A Name"_s, u"/apps/a.desktop"_s, u"%"_s}},
      {u"sh -c $(reboot);x %u"_s, url, {u"sh"_s, u"-c"_s, u"$(reboot);x"_s, u"quillo://open?a=1&b=;x"_s}},
      {u"app \"open"_s, url, {}},
      {u"  "_s, url, {}},
      {u"%f"_s, {}, {}},
  };
  for (const auto& c : cases) EXPECT_EQ(entryWithExec(c.exec).commandLine(c.url), c.expected) << c.exec.toStdString();
}

TEST(DesktopEntry, ReadsOnlyTheMainGroup) {
  const auto entry = DesktopEntry::parse(
      u"# a comment\n[Other]\nExec=wrong\n[Desktop Entry]\r\nType = Application\nName=A\\sB\n\nExec=run "
      u"\"a\\\\\\\\b\"\n"
      "MimeType=text/plain;x-scheme-handler/quillo;\n=\nnonsense\n[Desktop Action New]\nExec=wrong\n"_s,
      u"/p"_s);
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->name, u"A B"_s);
  EXPECT_EQ(entry->commandLine({}), (QStringList{u"run"_s, u"a\\b"_s}));
  EXPECT_EQ(entry->mimeTypes, (QStringList{u"text/plain"_s, u"x-scheme-handler/quillo"_s}));
  for (const QString& text : {u""_s, u"Exec=run\nType=Application"_s, u"[Desktop Entry]\nType=Link\nExec=run"_s,
                              u"[Desktop Entry]\nType=Application"_s, u"[Desktop Entry"_s})
    EXPECT_FALSE(DesktopEntry::parse(text, u"/p"_s)) << text.toStdString();
}

// A user's directory and a system's, and a directory of executables.
class ApplicationDatabaseTest : public testing::Test {
 protected:
  void write(const QString& relative, const QString& text) {
    const QString path = m_home.path(relative);
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(writeFileInPlace(path, text.toUtf8()));
  }

  void install(const QString& relative, const QString& more = u"MimeType=x-scheme-handler/quillo"_s) {
    write(relative, u"[Desktop Entry]\nType=Application\nExec=true %u\n"_s + more);
  }

  [[nodiscard]] ApplicationDatabase database() const {
    return ApplicationDatabase({{m_home.path(u"config"_s)},
                                {m_home.path(u"user"_s), m_home.path(u"system"_s)},
                                {u"/usr/bin"_s, u"/bin"_s},
                                {u"kde"_s}});
  }

  // The file name of the handler, empty for none.
  [[nodiscard]] QString handler(const QString& type = u"x-scheme-handler/quillo"_s) const {
    const auto entry = database().handler(type);
    return entry ? QFileInfo(entry->path).fileName() : QString();
  }

  TestHome m_home;
};

TEST_F(ApplicationDatabaseTest, TheUsersChoiceGoesBeforeTheSystemsOffer) {
  EXPECT_EQ(handler(), u""_s);
  install(u"system/applications/z.desktop"_s);
  EXPECT_EQ(handler(), u"z.desktop"_s);
  install(u"system/applications/a.desktop"_s);
  EXPECT_EQ(handler(), u"a.desktop"_s);
  write(u"system/applications/mimeinfo.cache"_s, u"[MIME Cache]\nx-scheme-handler/quillo=z.desktop;a.desktop;\n"_s);
  EXPECT_EQ(handler(), u"z.desktop"_s);
  install(u"user/applications/mine.desktop"_s);
  EXPECT_EQ(handler(), u"mine.desktop"_s);
  write(u"config/mimeapps.list"_s, u"[Added Associations]\nx-scheme-handler/quillo=a.desktop\n"_s);
  EXPECT_EQ(handler(), u"a.desktop"_s);
  write(u"config/mimeapps.list"_s, u"[Default Applications]\nx-scheme-handler/quillo = gone.desktop;z.desktop;\n"_s);
  EXPECT_EQ(handler(), u"z.desktop"_s);
  write(u"config/kde-mimeapps.list"_s, u"[Default Applications]\nx-scheme-handler/quillo=mine.desktop\n"_s);
  EXPECT_EQ(handler(), u"mine.desktop"_s);
  EXPECT_EQ(handler(u"x-scheme-handler/quill"_s), u""_s);
}

TEST_F(ApplicationDatabaseTest, PassesOverWhatCannotBeStarted) {
  install(u"system/applications/a.desktop"_s, u"MimeType=x-scheme-handler/quillo\nTerminal=true"_s);
  install(u"system/applications/b.desktop"_s, u"MimeType=x-scheme-handler/quillo\nTryExec=/nonexistent/b"_s);
  install(u"system/applications/c.desktop"_s, u"MimeType=x-scheme-handler/quillo\nExec=/nonexistent/c"_s);
  install(u"system/applications/d.desktop"_s);
  write(u"user/applications/d.desktop"_s, u"[Desktop Entry]\nHidden=true\n"_s);
  install(u"system/applications/e.desktop"_s);
  write(u"config/mimeapps.list"_s, u"[Removed Associations]\nx-scheme-handler/quillo=e.desktop\n"_s);
  EXPECT_EQ(handler(), u""_s);
  install(u"system/applications/f.desktop"_s);
  EXPECT_EQ(handler(), u"f.desktop"_s);
}

TEST_F(ApplicationDatabaseTest, FindsAnApplicationByItsFilesName) {
  install(u"system/applications/com.quilloapp.quillo.desktop"_s, {});
  install(u"system/applications/vendor/tool.desktop"_s, {});
  EXPECT_TRUE(database().application(u"com.quilloapp.quillo.desktop"_s));
  EXPECT_TRUE(database().application(u"vendor-tool.desktop"_s));
  for (const QString& name : {u"com.quilloapp.quill.desktop"_s, u"vendor/tool.desktop"_s, u"../applications"_s, u""_s})
    EXPECT_FALSE(database().application(name)) << name.toStdString();
}

TEST_F(ApplicationDatabaseTest, AFileIsOpenedByItsTypeOrAMoreGeneralOne) {
  install(u"system/applications/editor.desktop"_s, u"MimeType=text/plain"_s);
  write(u"note.txt"_s, u"text"_s);
  write(u"script.py"_s, u"print()"_s);
  write(u"picture.png"_s, u"\x89PNG\r\n"_s);
  const auto opens = [&](const QUrl& url) { return handlerOfURL(url, database()).has_value(); };
  EXPECT_TRUE(opens(QUrl::fromLocalFile(m_home.path(u"note.txt"_s))));
  EXPECT_TRUE(opens(QUrl::fromLocalFile(m_home.path(u"script.py"_s))));
  EXPECT_FALSE(opens(QUrl::fromLocalFile(m_home.path(u"picture.png"_s))));
  EXPECT_FALSE(opens(QUrl(u"note.txt"_s)));
  EXPECT_FALSE(opens(QUrl()));
}

}  // namespace
}  // namespace quillo
