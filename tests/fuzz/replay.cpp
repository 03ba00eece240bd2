#include "FuzzTarget.h"

#include <QDirIterator>
#include <QFile>

#include <algorithm>

// Plays every file below the folders given. A folder without a file fails, as it tests nothing.
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
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()), static_cast<size_t>(bytes.size()));
  }
  return files.isEmpty() ? 1 : 0;
}
