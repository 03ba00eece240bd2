#pragma once

#include "exchange/WrittenMoment.h"
#include "qlcore/QLLocation.h"
#include "qlcore/QLWeather.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace quillo {

// What stands in YAML above the text of a note, between two lines "---". Keys of other programs are passed by.
struct FrontMatter {
  std::optional<QString> uuid;  // in the form of file names
  std::optional<WrittenMoment> moment;
  QString timeZone;  // as it is told; may be unknown here
  QStringList tags;
  std::optional<QLLocation> location;
  std::optional<QLWeather> weather;
  QString title;
};

// A note in its two parts. Without front matter all of the file is the text.
struct Note {
  std::optional<FrontMatter> frontMatter;
  QString text;
};

// Why a file is no note: its line, and a sentence's end.
struct NoteFault {
  int line{0};
  QString reason;
};

// `file` is the whole of one. Line breaks of two characters become single ones where the file's first is of that kind.
// Nothing, with a fault, where there is front matter that has no end or cannot be read.
[[nodiscard]] std::optional<Note> readNote(QString file, NoteFault* fault);

}  // namespace quillo
