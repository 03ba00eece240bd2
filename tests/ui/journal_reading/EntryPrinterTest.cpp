#include "journal/printing/EntryPages.h"
#include "journal/printing/EntryPrinter.h"

#include <QDir>
#include <QFile>
#include <QPrinter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

using Outcome = EntryPrinter::Outcome;

const QPageLayout a5(QPageSize(QPageSize::A5), QPageLayout::Landscape, QMarginsF(40, 40, 40, 40));

class EntryPrinterTest : public testing::Test {
 protected:
  EntryPrinter::NextEntry entries(int count, const QString& text = u"Words.\n\n> More"_s) {
    return [left = count, text]() mutable -> std::optional<PrintedEntry> {
      if (left-- == 0) return {};
      return PrintedEntry{u"Friday"_s, u"Berlin"_s, text};
    };
  }
  QByteArray contents() const {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  void write(const QByteArray& bytes) const {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
  }

  QTemporaryDir folder;
  QString path{folder.filePath(u"journal.pdf"_s)};
};

TEST_F(EntryPrinterTest, WritesAPdfOfManyEntriesInAnyThread) {
  int printed = 0;
  int pages = 0;
  Outcome outcome = Outcome::Failed;
  std::thread([&] {
    EntryPrinter printer(entries(60), [&](int entryCount, int pageCount) {
      EXPECT_GE(entryCount, printed);
      printed = entryCount;
      pages = pageCount;
      return true;
    });
    outcome = printer.writePdf(path, a5);
  }).join();
  EXPECT_EQ(outcome, Outcome::Printed);
  EXPECT_EQ(printed, 60);
  // Several to a page, and not all on one.
  EXPECT_GT(pages, 5);
  EXPECT_LT(pages, 40);
  EXPECT_EQ(contents().count("/Type /Page\n"), pages);
  EXPECT_TRUE(contents().contains("MediaBox [0 0 595"));
  EXPECT_EQ(QFile::permissions(path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST_F(EntryPrinterTest, LeavesEverythingAsItWasWhenItIsCancelledOrFails) {
  write("old");
  EntryPrinter cancelled(entries(60), [](int, int pages) { return pages < 3; });
  EXPECT_EQ(cancelled.writePdf(path, a5), Outcome::Cancelled);
  EXPECT_EQ(contents(), "old");
  EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"journal.pdf"_s});

  Error error;
  EntryPrinter failing(entries(1));
  EXPECT_EQ(failing.writePdf(folder.filePath(u"missing/x.pdf"_s), a5, &error), Outcome::Failed);
  EXPECT_TRUE(error.localizedDescription.contains(u"missing/x.pdf"_s));
  EXPECT_FALSE(error.localizedDescription.contains(u'\n'));

  // A pipe is not waited for, and no more replaced than a device.
  const QByteArray pipe = QFile::encodeName(folder.filePath(u"pipe"_s));
  ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);
  EXPECT_EQ(failing.writePdf(QFile::decodeName(pipe), a5, &error), Outcome::Failed);
  EXPECT_FALSE(QFileInfo(QFile::decodeName(pipe)).isFile());
}

TEST_F(EntryPrinterTest, PrintsOnThePaperOfThePrinter) {
  QPrinter printer;
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(path);
  printer.setPageLayout(a5);
  EXPECT_EQ(EntryPrinter(entries(2)).print(printer), Outcome::Printed);
  EXPECT_TRUE(contents().startsWith("%PDF"));
  EXPECT_TRUE(contents().contains("MediaBox [0 0 595"));
}

TEST_F(EntryPrinterTest, PrintsThePagesThatWereAskedFor) {
  for (const auto& [first, last] : {std::pair{1, 1}, {2, 4}, {20, 99}}) {
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(path);
    printer.setPageLayout(a5);
    printer.setPrintRange(QPrinter::PageRange);
    printer.setFromTo(first, last);
    int all = 0;
    EntryPrinter entryPrinter(entries(60), [&all](int, int pageCount) {
      all = pageCount;
      return true;
    });
    EXPECT_EQ(entryPrinter.print(printer), Outcome::Printed);
    EXPECT_EQ(contents().count("/Type /Page\n"), std::min(last, all) - first + 1) << first;
  }
}

TEST_F(EntryPrinterTest, EndsWithTextsThatFitOnNoPage) {
  const QPageLayout tiny(QPageSize(QSizeF(120, 90), QPageSize::Point), QPageLayout::Portrait,
                         QMarginsF(30, 30, 30, 30));
  for (const QString& text :
       {u""_s, u"# H\n"_s.repeated(50), u"a|b\n-|-\n"_s + u"word "_s.repeated(500) + u"|2"_s, u"```\nx\ny\nz\n```"_s})
    EXPECT_EQ(EntryPrinter(entries(2, text)).writePdf(path, tiny), Outcome::Printed) << text.left(9).toStdString();
}

TEST(PageUnitsTest, KeepsHeadingsAndParagraphsTogether) {
  // Lines of height 10: "h" keeps with the next.
  const struct {
    const char* units;
    double room;
    bool isPageEmpty;
    qsizetype fitting;
  } cases[] = {
      {"hhll", 100, false, 4}, {"hhll", 25, false, 0}, {"hhll", 30, false, 3}, {"lhll", 25, false, 1},
      {"hhhh", 25, true, 2},   {"llll", 5, true, 1},   {"llll", 5, false, 0},
  };
  for (const auto& [text, room, isPageEmpty, fitting] : cases) {
    QList<PageUnit> units;
    for (const char* c = text; *c; ++c) {
      const double top = static_cast<double>(units.size()) * 10;
      units.append({top, top + 10, *c == 'h'});
    }
    EXPECT_EQ(unitsThatFit(units, 0, 0, room, isPageEmpty), fitting) << text << ' ' << room;
  }
}

}  // namespace

}  // namespace quillo
