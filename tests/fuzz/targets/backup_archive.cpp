#include "FuzzTarget.h"
#include "exchange/backup/BackupCheck.h"
#include "exchange/backup/BackupRestore.h"
#include "foundation/FileDescriptor.h"

#include <QTemporaryDir>

#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <string>

using namespace quillo;

namespace {

FileDescriptor fileWith(const QByteArray& bytes) {
  FileDescriptor file(::memfd_create("backup", MFD_CLOEXEC));
  require(file.isOpen() && writeAll(file.number(), bytes) == 0, "there is memory for the input");
  ::lseek(file.number(), 0, SEEK_SET);
  return file;
}

// Each header of a tar archive has a sum of its bytes, which changes would hardly ever meet.
void mendHeaders(QByteArray& tar) {
  constexpr qsizetype headerSize = 512;
  for (qsizetype at = 0; at + headerSize <= tar.size(); at += headerSize) {
    if (tar.mid(at + 257, 5) != "ustar") continue;
    tar.replace(at + 148, 8, QByteArray(8, ' '));
    unsigned sum = 0;
    for (qsizetype i = 0; i < headerSize; ++i) sum += static_cast<unsigned char>(tar[at + i]);
    tar.replace(at + 148, 6, QByteArray::number(sum, 8).rightJustified(6, '0').right(6));
    tar[at + 154] = '\0';
  }
}

// All that is there is plain files and folders below the journal. By the bytes of their names, which need be no text.
void requireNothingElse(const std::string& folder, bool isRestored) {
  namespace fs = std::filesystem;
  fs::directory_iterator top(folder);
  require(isRestored ? top != fs::end(top) && top->path().filename() == "New.quillojournal" && ++top == fs::end(top)
                     : top == fs::end(top),
          "there is the journal or nothing");
  for (const auto& file : fs::recursive_directory_iterator(folder)) {
    const auto type = file.symlink_status().type();
    require(type == fs::file_type::regular || type == fs::file_type::directory, "there are files and folders only");
  }
}

}  // namespace

// The input as a backup's archive, compressed or not: verified, and restored where it is whole.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  QByteArray bytes = inputBytes(data, size);
  mendHeaders(bytes);
  Error error;
  const auto reader = BackupReader::open(fileWith(bytes), QStringLiteral("input"), &error);
  if (!reader) {
    require(!error.localizedDescription.isEmpty(), "a refusal has a reason");
    return 0;
  }
  const BackupCheck check = BackupCheck::of(*reader);
  require(check.isWhole() || !check.error->localizedDescription.isEmpty(), "a refusal has a reason");

  const FileDescriptor file = fileWith(bytes);
  // What is restored is synced, which on a disk takes a hundred times as long.
  const bool isMemory = ::access("/dev/shm", W_OK) == 0;
  const QTemporaryDir home(isMemory ? QStringLiteral("/dev/shm/backup-XXXXXX") : QString());
  const BackupRestore restore{.archive = QStringLiteral("/proc/self/fd/%1").arg(file.number()),
                              .journal = home.filePath(QStringLiteral("New.quillojournal"))};
  const bool isRestored = restore.run().outcome == BackupRestore::Outcome::Restored;
  requireNothingElse(home.path().toStdString(), isRestored);
  require(check.isWhole() || !isRestored, "what is not whole is not restored");
  return 0;
}
