#include "FuzzTarget.h"

#include <QDirIterator>
#include <QFile>

#include <algorithm>

namespace {

void play(const QByteArray& bytes) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()), static_cast<size_t>(bytes.size()));
}

// What a fuzzer would try first: torn at every place, and there another byte, also one that means something to a
// format.
void playDamaged(const QByteArray& bytes) {
  // Of long files not every place.
  const auto step = 1 + bytes.size() / 250;
  for (qsizetype at = 0; at < bytes.size(); at += step) {
    play(bytes.first(at));
    for (const char other : {'\0', '\xff', '<', '"', '(', '7'}) {
      QByteArray damaged = bytes;
      damaged[at] = other;
      play(damaged);
    }
  }
}

}  // namespace

// Plays every file below the folders given, and damaged ones like it. A folder without a file fails, as it tests
// nothing.
int main(int argc, char** argv) {
  QStringList files;
  for (int i = 1; i < argc; ++i) {
    const auto before = files.size();
    // Bounded by the files there; links are not followed.
    for (QDirIterator it(QString::fromLocal8Bit(argv[i]), QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
      files << it.next();
    if (files.size() == before) {
      std::fprintf(stderr, "%s: no file to play\n", argv[i]);
      return 1;
    }
  }
  std::sort(files.begin(), files.end());
  for (const QString& path : files) {
    QFile file(path);
    if (!file.open(QFile::ReadOnly)) {
      std::fprintf(stderr, "%s: cannot be read\n", qPrintable(path));
      return 1;
    }
    // Before it is played: the last line names what the program died of.
    std::fprintf(stderr, "%s\n", qPrintable(path));
    const QByteArray bytes = file.readAll();
    play(bytes);
    playDamaged(bytes);
  }
  return files.isEmpty() ? 1 : 0;
}
