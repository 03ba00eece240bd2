#pragma once

#include "foundation/Error.h"
#include "journal/printing/PrintedEntry.h"

#include <QPageLayout>
#include <QString>

#include <functional>
#include <limits>
#include <optional>

class QPrinter;

namespace quillo {

// Of all pages those that are printed, from 1.
struct PageRange {
  int first{1};
  int last{std::numeric_limits<int>::max()};

  [[nodiscard]] bool contains(int page) const { return page >= first && page <= last; }
};

// Prints entries one after the other, in dark text on white whatever the windows look like, with the number of each
// page at its foot. A heading is not left alone at the end of a page. It works until it is done; the progress callback,
// called after every page and every entry, is where others get their turn.
class EntryPrinter {
 public:
  // The next entry, or nothing when there are no more. They are asked for as they are printed.
  using NextEntry = std::function<std::optional<PrintedEntry>()>;
  // How much is printed so far; false stops the printing.
  using Progress = std::function<bool(int entries, int pages)>;
  enum class Outcome { Printed, Cancelled, Failed };

  explicit EntryPrinter(NextEntry next, Progress progress = {});

  // The text's size, in points.
  void setFontSize(int points) { m_fontSize = points; }

  // On the printer's paper, the pages that its settings ask for. A printer that makes a PDF file makes it as `writePdf`
  // does.
  Outcome print(QPrinter& printer, Error* error = nullptr);
  // A PDF in place of what is at `path`, mode 0600: the old file stays as it was unless all is written.
  Outcome writePdf(const QString& path, const QPageLayout& layout, Error* error = nullptr);

 private:
  NextEntry m_next;
  Progress m_progress;
  int m_fontSize{11};
  PageRange m_range;
};

}  // namespace quillo
