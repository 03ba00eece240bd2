#include "ManagerFixture.h"
#include "foundation/DetachedProcess.h"
#include "foundation/FileContents.h"
#include "platform/linux/AutostartEntry.h"
#include "platform/linux/XdgLoginItems.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

const QString agentID = Identifier::agent;

class XdgLoginItemsTest : public ManagerTest {
 protected:
  QString program(const QString& name, const QByteArray& script = "#!/bin/sh\n") {
    QString path = home.path(name);
    EXPECT_TRUE(writeFileInPlace(path, script));
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
  }
  QString folder() const { return home.path(u".config/autostart"_s); }
  QString entryPath(const QString& label = agentID) const { return folder() + u'/' + label + u".desktop"_s; }
  void writeEntry(const QByteArray& bytes, const QString& label = agentID) {
    QDir().mkpath(folder());
    ASSERT_TRUE(writeFileInPlace(entryPath(label), bytes));
  }
  XdgLoginItems service(const QStringList& arguments = {}) {
    return XdgLoginItems(folder(), running, {agentID, u"Quillo Agent"_s, u"Write"_s, u"quill"_s, helper, arguments},
                         [this](const QString& path, const QStringList& given) {
                           events << u"start "_s + path + u'|' + given.join(u'|');
                           return true;
                         });
  }

  // Every character that an Exec line gives a meaning to, but for the one that cannot be used.
  QString helper = program(u"a b\"$`\\ x"_s);
};

TEST_F(XdgLoginItemsTest, EnablingWritesTheEntryAndStartsTheHelperDisablingUndoesBoth) {
  XdgLoginItems xdg = service({u"--home"_s, u"/a b"_s});
  EXPECT_EQ(xdg.jobDictionaries(), QList<LoginJob>{});
  ASSERT_TRUE(xdg.setLoginItemEnabled(agentID, true));
  EXPECT_EQ(take(), QStringList{u"start "_s + helper + u"|--home|/a b"_s});
  EXPECT_EQ(xdg.jobDictionaries(), (QList<LoginJob>{{agentID, true}}));
  EXPECT_EQ(modeOf(entryPath()), 0644);
  const QByteArray written = contentsOfFile(entryPath()).value_or(QByteArray());
  EXPECT_TRUE(written.contains("\nComment=Write\n") && written.contains("\nIcon=quill\n")) << written.constData();

  running.applications = {{agentID, 7}, {u"other"_s, 8}};
  EXPECT_TRUE(xdg.setLoginItemEnabled(agentID, false));
  EXPECT_EQ(running.terminated, QList<qint64>{7});
  EXPECT_FALSE(QFileInfo::exists(entryPath()));
  // 7 was asked to end and may still be there: the helper is started again all the same, but not beside 9.
  EXPECT_TRUE(xdg.setLoginItemEnabled(agentID, true));
  EXPECT_EQ(take().size(), 1);
  running.applications = {{agentID, 9}};
  EXPECT_TRUE(xdg.setLoginItemEnabled(agentID, true));
  EXPECT_EQ(take(), QStringList{});
}

TEST_F(XdgLoginItemsTest, TheExecLineIsEscapedAsTheStandardWantsIt) {
  AutostartEntry entry;
  entry.name = u" Quillo"_s;
  entry.comment = u"Write\nnow"_s;
  entry.icon = u"quill"_s;
  entry.program = u"/a b/%q\\$"_s;
  entry.tryProgram = entry.program;
  entry.arguments = QStringList{u"--home"_s, u"say \"`\n"_s};
  entry.onDemand = true;
  EXPECT_EQ(entry.toBytes().toStdString(),
            "[Desktop Entry]\n"
            "Type=Application\n"
            "Name=\\sQuillo\n"
            "Comment=Write\\nnow\n"
            "Icon=quill\n"
            "TryExec=/a b/%q\\\\$\n"
            "Exec=\"/a b/%%q\\\\\\\\\\\\$\" \"--home\" \"say \\\\\"\\\\`\\n\"\n"
            "X-Quillo-OnDemand=true\n");
  const auto read = AutostartEntry::fromBytes(entry.toBytes()).value_or(AutostartEntry());
  EXPECT_EQ(read.program, entry.program);
  EXPECT_EQ(read.tryProgram, entry.program);
  EXPECT_EQ(read.name, entry.name);
}

TEST_F(XdgLoginItemsTest, WhatTheSessionWouldNotStartDoesNotExist) {
  const QByteArray head = "[Desktop Entry]\nType=Application\n";
  const QByteArray mark = "X-Quillo-OnDemand=true\n";
  const struct {
    const char* what;
    QByteArray bytes;
    std::optional<bool> onDemand;
  } rows[] = {
      {"whole", "# made by hand\n\n[Desktop Entry]\r\nType = Application\r\nExec = sh -c x\nX-Quillo-OnDemand= true",
       true},
      {"another group", head + "Exec=sh\n" + mark + "[Desktop Action x]\nHidden=true\n", true},
      {"the last of two equal keys", head + "Exec=sh\nX-Quillo-OnDemand=false\n" + mark, true},
      {"not on demand", head + "Exec=sh\n", false},
      {"mark in another group", head + "Exec=sh\n[Other]\n" + mark, false},
      {"hidden", head + "Exec=sh\n" + mark + "Hidden=true\n", {}},
      {"hidden by GNOME", head + "Exec=sh\n" + mark + "X-GNOME-Autostart-enabled=false\n", {}},
      {"program gone", head + "Exec=/no/such/program\n" + mark, {}},
      {"TryExec gone", head + "TryExec=/no/such\nExec=sh\n" + mark, {}},
      {"no program", head + "Exec=\n" + mark, {}},
      {"open quote", head + "Exec=\"sh\n" + mark, {}},
      {"a link", "[Desktop Entry]\nType=Link\nExec=sh\n" + mark, {}},
      {"key before the group", "Exec=sh\n" + head + mark, {}},
      {"line without a key", head + "=x\nExec=sh\n" + mark, {}},
      {"wrong group", "[Other]\nType=Application\nExec=sh\n" + mark, {}},
      {"empty", "", {}},
      {"garbage", QByteArray("\0\xff\xfe[Desktop Entry]\n", 19), {}},
      {"too long", head + "Exec=sh\n" + mark + QByteArray(2 << 20, '#'), {}},
  };
  XdgLoginItems xdg = service();
  for (const auto& row : rows) {
    writeEntry(row.bytes);
    const auto expected = row.onDemand ? QList<LoginJob>{{agentID, *row.onDemand}} : QList<LoginJob>{};
    EXPECT_EQ(xdg.jobDictionaries(), expected) << row.what;
  }
  // A pipe in its place must not hang the reader.
  QFile::remove(entryPath());
  ASSERT_EQ(::mkfifo(QFile::encodeName(entryPath()).constData(), 0600), 0);
  EXPECT_EQ(xdg.jobDictionaries(), QList<LoginJob>{});
  EXPECT_TRUE(xdg.setLoginItemEnabled(agentID, true));
  EXPECT_EQ(xdg.jobDictionaries(), (QList<LoginJob>{{agentID, true}}));
}

TEST_F(XdgLoginItemsTest, FailuresLeaveEverythingAsItWas) {
  XdgLoginItems xdg = service();
  for (const QString& label : {u""_s, u"../x"_s, u".x"_s, u"com.other"_s})
    EXPECT_FALSE(xdg.setLoginItemEnabled(label, true)) << label.toStdString();
  EXPECT_FALSE(xdg.setLoginItemEnabled(u"../x"_s, false));
  // What is not there is taken out already.
  EXPECT_TRUE(xdg.setLoginItemEnabled(agentID, false));

  QDir().mkpath(entryPath() + u"/not empty"_s);
  running.applications = {{agentID, 7}};
  EXPECT_FALSE(xdg.setLoginItemEnabled(agentID, true));
  EXPECT_FALSE(xdg.setLoginItemEnabled(agentID, false));
  EXPECT_EQ(running.terminated, QList<qint64>{});
  QDir(folder()).removeRecursively();

  QFile::remove(helper);
  EXPECT_FALSE(xdg.setLoginItemEnabled(agentID, true));
  EXPECT_TRUE(xdg.errorString().contains(helper));
  EXPECT_FALSE(QFileInfo::exists(entryPath()));
  EXPECT_EQ(take(), QStringList{});

  // GLib would look for "100%%".
  helper = program(u"100%"_s);
  XdgLoginItems unstartable = service();
  EXPECT_FALSE(unstartable.setLoginItemEnabled(agentID, true));
  EXPECT_TRUE(unstartable.errorString().endsWith(u"a % in its path, "_s + helper));
  EXPECT_FALSE(unstartable.insertSessionLoginItemAtFront(QUrl::fromLocalFile(helper)));
  EXPECT_FALSE(QFileInfo::exists(entryPath()));
  EXPECT_EQ(take(), QStringList{});

  ASSERT_TRUE(writeFileInPlace(folder(), "a file where the folder should be"));
  EXPECT_EQ(xdg.sessionLoginItems(), std::nullopt);
  EXPECT_FALSE(xdg.insertSessionLoginItemAtFront(QUrl(u"file:///bin/sh"_s)));
}

TEST_F(XdgLoginItemsTest, TheSessionsListKeepsItsOrderAndLeavesOutTheHelper) {
  const auto local = [](const QString& path) { return QUrl::fromLocalFile(path); };
  const QUrl x = local(program(u"x y"_s));
  const QUrl z = local(program(u"z"_s));
  const QUrl folderURL = local(home.path());
  XdgLoginItems xdg = service();
  EXPECT_EQ(xdg.sessionLoginItems(), QList<QUrl>{});
  writeEntry("[Desktop Entry]\nType=Application\nExec=\"" + QFile::encodeName(z.toLocalFile()) + "\" --flag\n",
             u"by-hand"_s);
  ASSERT_TRUE(xdg.setLoginItemEnabled(agentID, true));
  for (const QUrl& url : {x, folderURL}) EXPECT_TRUE(xdg.insertSessionLoginItemAtFront(url));
  EXPECT_EQ(xdg.sessionLoginItems(), (QList<QUrl>{folderURL, x, z}));

  EXPECT_FALSE(xdg.removeSessionLoginItem(QUrl(u"file:///none"_s)));
  EXPECT_FALSE(xdg.insertSessionLoginItemAtFront(QUrl()));
  EXPECT_TRUE(xdg.removeSessionLoginItem(z));
  EXPECT_FALSE(QFileInfo::exists(entryPath(u"by-hand"_s)));
  EXPECT_TRUE(xdg.removeSessionLoginItem(folderURL));
  QFile::remove(x.toLocalFile());
  EXPECT_EQ(xdg.sessionLoginItems(), QList<QUrl>{});
  EXPECT_EQ(xdg.jobDictionaries().size(), 1);
}

TEST_F(XdgLoginItemsTest, StartsAProgramThatHoldsNothingOfOurs) {
  const QString pipe = home.path(u"pipe"_s);
  ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
  const int reader = ::open(QFile::encodeName(pipe).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  const QString script =
      program(u"s"_s, "#!/bin/sh\necho \"$1 $(readlink /proc/self/fd/0) $(readlink /proc/$$/fd/2)\" > \"$2\"\n");
  ASSERT_TRUE(startDetached(script, {u"a b"_s, pipe}));
  pollfd waiting{reader, POLLIN, 0};
  ASSERT_EQ(::poll(&waiting, 1, 20000), 1);
  QByteArray text(256, '\0');
  text.truncate(std::max<ssize_t>(0, ::read(reader, text.data(), 256)));
  ::close(reader);
  EXPECT_EQ(text.toStdString(), "a b /dev/null /dev/null\n");
  EXPECT_FALSE(startDetached(home.path(u"none"_s), {}));
}

}  // namespace
}  // namespace quillo
