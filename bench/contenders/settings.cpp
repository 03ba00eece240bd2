// Writing one key of a settings file of sixty, and the system calls alone that it takes, with the same bytes.
#include "../SampleLists.h"
#include "Contenders.h"
#include "config/PersistentPropertyList.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <memory>

namespace quillo {

namespace {

using namespace Qt::StringLiterals;

void check(bool good) {
  if (good) return;
  std::cerr << "bench_contenders: the settings cannot be written\n";
  std::exit(1);
}

// The list reads the file and writes it in place; a boolean of another value leaves its size as it was.
void bareSystemCalls(const std::string& path, QByteArray& bytes) {
  struct stat status {};
  int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  check(file >= 0 && ::fstat(file, &status) == 0);
  bytes.resize(status.st_size);
  check(::read(file, bytes.data(), static_cast<size_t>(bytes.size())) == bytes.size() && ::close(file) == 0);
  file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600);
  check(file >= 0 && ::fstat(file, &status) == 0);
  check(::pwrite(file, bytes.constData(), static_cast<size_t>(bytes.size()), 0) == bytes.size());
  check(::ftruncate(file, bytes.size()) == 0 && ::close(file) == 0);
}

}  // namespace

void addSettings(Contenders& contenders, const std::string& directory) {
  const auto prepared = [&directory](const char* name) {
    std::string path = directory + "/" + name;
    QFile file(QFile::decodeName(path.c_str()));
    const auto bytes = PropertyListSerialization::dataWithPropertyList(sampleSettings(), PropertyListFormat::Binary);
    check(bytes && file.open(QIODevice::WriteOnly) && file.write(*bytes) == bytes->size());
    return path;
  };
  const std::shared_ptr<PersistentPropertyList> list = PersistentPropertyList::withPropertyListURL(
      QUrl::fromLocalFile(QFile::decodeName(prepared("settings.plist").c_str())));
  check(list != nullptr);
  contenders["settings/ours"] = [list] {
    const QString key = u"ReminderSetting0"_s;
    list->setBoolForKey(!list->boolForKey(key), key);
    check(list->dirtyProperties().isEmpty());
  };
  contenders["settings/system calls"] = [path = prepared("bare.plist"), bytes = QByteArray()]() mutable {
    bareSystemCalls(path, bytes);
  };
}

}  // namespace quillo
