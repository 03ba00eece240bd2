#include "BackupFixture.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

#include <functional>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

struct Member {
  std::string path;
  QByteArray bytes{};
  mode_t type{AE_IFREG};
  std::string linkTo{};
  qint64 size{-1};  // what the header says, where that is not so
};
using Members = std::vector<Member>;

const QByteArray properties =
    "<plist><dict><key>formatVersion</key><integer>1</integer><key>identifier</key><string>I</string></dict></plist>";

BackupManifest manifest() {
  return {u"J"_s, u"I"_s, Date(0), 1, 2, 1000};
}

Members wholeBackup() {
  return {{"Backup.plist", manifest().toPropertyList()},
          {"J.quillojournal/", {}, AE_IFDIR},
          {"J.quillojournal/Entries/", {}, AE_IFDIR},
          {"J.quillojournal/Entries/00000000-0000-4000-8000-000000000000.plist", "<plist><dict/></plist>"},
          {"J.quillojournal/Journal.plist", properties},
          {"SHA256SUMS"}};
}

// Gives the file of this name in a tar archive another size: in the header, which has a sum of its bytes.
void claimSize(QByteArray& tar, const std::string& path, qint64 size) {
  const qsizetype header = tar.indexOf(QByteArray::fromStdString(path) + '\0');
  ASSERT_TRUE(header >= 0 && header % 512 == 0);
  QByteArray number(12, 0);
  number[0] = '\x80';
  qToBigEndian(size, number.data() + 4);
  tar.replace(header + 124, 12, number);
  tar.replace(header + 148, 8, QByteArray(8, ' '));
  unsigned sum = 0;
  for (qsizetype i = 0; i < 512; ++i) sum += static_cast<unsigned char>(tar[header + i]);
  tar.replace(header + 148, 8, QByteArray::number(sum, 8).rightJustified(6, '0') + QByteArray("\0 ", 2));
}

void writeMember(archive* out, const Member& member) {
  archive_entry* entry = archive_entry_new();
  archive_entry_set_pathname(entry, member.path.c_str());
  archive_entry_set_filetype(entry, member.type);
  archive_entry_set_perm(entry, 0644);
  archive_entry_set_size(entry, member.bytes.size());
  if (member.type == AE_IFLNK) archive_entry_set_symlink(entry, member.linkTo.c_str());
  if (member.type == AE_IFREG && !member.linkTo.empty()) archive_entry_set_hardlink(entry, member.linkTo.c_str());
  archive_write_header(out, entry);
  if (!member.bytes.isEmpty()) archive_write_data(out, member.bytes.constData(), size_t(member.bytes.size()));
  archive_entry_free(entry);
}

// With the checksums that fit, where there is a place for them.
void write(const QString& path, Members members) {
  BackupChecksums sums;
  for (Member& member : members) {
    if (member.path == "SHA256SUMS" && member.bytes.isEmpty()) member.bytes = checksumText(sums);
    if (member.type == AE_IFREG && member.path.find('/') != std::string::npos)
      sums[member.path] = QCryptographicHash::hash(member.bytes, QCryptographicHash::Sha256);
  }
  QByteArray tar(68 * 1024 * 1024, 0);
  size_t used = 0;
  archive* out = archive_write_new();
  archive_write_set_format_gnutar(out);
  archive_write_open_memory(out, tar.data(), size_t(tar.size()), &used);
  for (const Member& member : members) writeMember(out, member);
  archive_write_free(out);
  tar.truncate(qsizetype(used));
  for (const Member& member : members)
    if (member.size >= 0) claimSize(tar, member.path, member.size);

  out = archive_write_new();
  archive_write_add_filter_zstd(out);
  archive_write_set_format_raw(out);
  archive_write_open_filename(out, QFile::encodeName(path).constData());
  writeMember(out, {"tar", tar});
  archive_write_free(out);
}

class HostileArchiveTest : public BackupFixture {
 protected:
  // Neither verified nor restored, with this said; and nothing is there then that was not before.
  void expectRefused(const QString& says) {
    const auto before = treeOf(home.path());
    const auto check = BackupCheck::of(path);
    ASSERT_FALSE(check.isWhole());
    EXPECT_TRUE(check.error->localizedDescription.contains(says)) << check.error->localizedDescription.toStdString();
    const auto restored = restore(path).run();
    EXPECT_EQ(restored.outcome, BackupRestore::Outcome::Failed);
    EXPECT_TRUE(restored.error.localizedDescription.contains(says) ||
                restored.error.localizedDescription.contains(u"not a journal"_s))
        << restored.error.localizedDescription.toStdString();
    EXPECT_EQ(treeOf(home.path()), before);
  }

  QString path = home.path(u"archive"_s);
};

TEST_F(HostileArchiveTest, TheWholeOneIsTaken) {
  write(path, wholeBackup());
  const auto check = BackupCheck::of(path);
  EXPECT_TRUE(check.isWhole()) << check.error->description().toStdString();
  EXPECT_EQ(restore(path).run().outcome, BackupRestore::Outcome::Restored);
}

TEST_F(HostileArchiveTest, WhatIsNotABackupIsRefused) {
  const auto adding = [](const Member& member) {
    return [member](Members& members) { members.insert(members.end() - 1, member); };
  };
  const QByteArray hugeNumbers = QByteArray(manifest().toPropertyList()).replace("1000", "-5");
  const struct {
    const char* what;
    std::function<void(Members&)> change;
    QString says;
  } cases[] = {
      {"up and out", adding({"J.quillojournal/../../evil", "x"}), u"leads out"_s},
      {"from the root", adding({"/tmp/evil", "x"}), u"leads out"_s},
      {"a point", adding({"J.quillojournal/./evil", "x"}), u"leads out"_s},
      {"nothing between slashes", adding({"J.quillojournal//evil", "x"}), u"leads out"_s},
      {"beside the journal", adding({"K.quillojournal/evil", "x"}), u"no part of the journal"_s},
      {"above the journal", adding({"evil", "x"}), u"no part of the journal"_s},
      {"a link", adding({"J.quillojournal/evil", {}, AE_IFLNK, "/etc/passwd"}), u"neither a plain file"_s},
      {"a hard link", adding({"J.quillojournal/evil", {}, AE_IFREG, "J.quillojournal/Journal.plist"}),
       u"neither a plain file"_s},
      {"a pipe", adding({"J.quillojournal/evil", {}, AE_IFIFO}), u"neither a plain file"_s},
      {"a device", adding({"J.quillojournal/evil", {}, AE_IFCHR}), u"neither a plain file"_s},
      {"a name that is no text, and what is to be removed then",
       [](Members& members) {
         members.insert(members.end() - 1, {{"J.quillojournal/\xff", "x"}, {"evil", "x"}});
       },
       u"no part of the journal"_s},
      {"a file twice", adding({"J.quillojournal/Journal.plist", properties}), u"twice"_s},
      {"a file in a file", adding({"J.quillojournal/Journal.plist/x", "x"}), u"has no folder"_s},
      {"a folder in the place of a file", adding({"J.quillojournal/Journal.plist/", {}, AE_IFDIR}), u"twice"_s},
      {"a name that is too long", adding({"J.quillojournal/" + std::string(300, 'x'), "x"}), u"leads out"_s},
      {"more than it announces", adding({"J.quillojournal/evil", QByteArray(65 * 1024 * 1024 + 4000, 0)}),
       u"more in it than it says"_s},
      {"a size without the bytes", adding({"J.quillojournal/evil", {}, AE_IFREG, {}, qint64{1} << 60}),
       u"more in it than it says"_s},
      {"a manifest that is none", [](Members& members) { members[0].bytes = "<plist><array/></plist>"; },
       u"no format version"_s},
      {"numbers that cannot be", [&](Members& members) { members[0].bytes = hugeNumbers; }, u"numbers cannot be"_s},
      {"a manifest as large as a disk", [](Members& members) { members[0].bytes.resize(2 * 1024 * 1024); },
       u"so large"_s},
      {"no manifest", [](Members& members) { members.erase(members.begin()); }, u"does not begin with"_s},
      {"no checksums", [](Members& members) { members.pop_back(); }, u"its end is missing"_s},
      {"other checksums",
       [](Members& members) { members.back().bytes = QByteArray(64, '0') + "  J.quillojournal/x\n"; }, u"is missing"_s},
      {"checksums that are none", [](Members& members) { members.back().bytes = "x"; }, u"cannot be read"_s},
      {"a file that was changed",
       [](Members& members) {
         members.back().bytes =
             checksumText({{members[3].path, QByteArray(32, 0)}, {members[4].path, QByteArray(32, 0)}});
       },
       u"not what was saved"_s},
      {"something behind the end",
       [](Members& members) {
         members.push_back({"J.quillojournal/x", "x"});
       },
       u"behind its end"_s},
      {"no journal", [](Members& members) { members.erase(members.begin() + 1, members.end() - 1); },
       u"not have a journal"_s},
      {"a journal that is none", [](Members& members) { members.erase(members.end() - 2); }, u"Journal.plist"_s},
      {"nothing", [](Members& members) { members.clear(); }, u"does not begin with"_s},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    Members members = wholeBackup();
    one.change(members);
    write(path, members);
    expectRefused(one.says);
  }
}

TEST_F(HostileArchiveTest, WhatIsCutOffIsRefused) {
  write(path, wholeBackup());
  QFile file(path);
  ASSERT_TRUE(file.open(QFile::ReadWrite));
  const QByteArray whole = file.readAll();
  for (qsizetype size = whole.size() - 4; size >= 0; size -= 7) {
    ASSERT_TRUE(file.resize(size));
    EXPECT_FALSE(BackupCheck::of(path).isWhole()) << size;
  }
  expectRefused(u"no whole backup"_s);
  ASSERT_EQ(::mkfifo(QFile::encodeName(home.path(u"pipe"_s)).constData(), 0600), 0);
  EXPECT_FALSE(BackupCheck::of(home.path(u"pipe"_s)).isWhole());
  EXPECT_FALSE(BackupCheck::of(home.path()).isWhole());
}

}  // namespace
}  // namespace quillo
