#pragma once

#include "journal/printing/EntryPrinter.h"
#include "journal/reading/EntryDocument.h"

#include <QPainter>

class QPagedPaintDevice;
class QPdfWriter;

namespace quillo {

// What of a document must stay together on a page: a line or a table's row, in the document's units from its top.
struct PageUnit {
  double top{0};
  double bottom{0};
  bool keepsWithNext{false};
};

// All of a document's, from the top down.
[[nodiscard]] QList<PageUnit> pageUnits(const EntryDocument& document);

// How many of the units from `first` on, whose slice starts at `top`, go on what is left of a page; 0 when they begin
// better on the next. A unit that is taller than a whole page goes where it is and is cut.
[[nodiscard]] qsizetype unitsThatFit(const QList<PageUnit>& units, qsizetype first, double top, double room,
                                     bool isPageEmpty);

// Before the first page.
void setUpPdf(QPdfWriter& writer, const QPageLayout& layout, const QString& title);

// Puts entries on the pages of a device, one under the other.
class EntryPages {
 public:
  // The device's page is to be set up; the first page is there once this is.
  EntryPages(QPagedPaintDevice& device, int fontSize, const PageRange& range = {});
  ~EntryPages();

  [[nodiscard]] bool isActive() const { return m_painter.isActive(); }
  [[nodiscard]] int pageCount() const { return m_page; }
  // False when the device fails or `turnPage` says so, which is asked after every page that is full.
  bool add(const PrintedEntry& entry, const std::function<bool()>& turnPage);
  // Finishes the last page. False when the device fails.
  bool finish();

 private:
  bool startPage();
  void paintFoot();
  void paintSlice(const EntryDocument& document, double top, double height);

  QPagedPaintDevice& m_device;
  QPainter m_painter;
  EntryLook m_look;
  PageRange m_range;
  double m_width{0};   // of the text, in points
  double m_height{0};  // of the page without its foot, in points
  double m_y{0};       // how far the page is full
  int m_page{1};
};

}  // namespace quillo
