#include "journal/printing/EntryPrinter.h"
#include "journal/reading/ReadingView.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QPrinter>
#include <QTabWidget>

#include <cstdio>

namespace {

using namespace Qt::StringLiterals;
using namespace quillo;

const EntryContent evening{
    u"Tuesday, 24 November 2026"_s, u"18:42 \u00B7 Berlin, Germany \u00B7 8 \u00B0C Partly cloudy"_s,
    u"Walked the long way home along the river. The light was already gone but the water kept a little of it.\n\n"
    "Two herons on the far bank, not speaking. I stood until my hands were cold and thought of nothing in particular, "
    "which is the best I have managed this week.\n\nTomorrow: the letter, and ask Lisa about the boat. #evening"_s};

const EntryContent everything{
    u"Friday, 13 November 2026"_s, u"20:15 \u00B7 Potsdam, Germany \u00B7 6 \u00B0C Rain"_s,
    u"# The garden in autumn\n"
    "Rain all day, *softly* at first and then **with some force**; ~~no washing today~~.\n"
    "A second line, typed as one. <b>not bold</b> &amp; `git pull --rebase` runs among words.\n\n"
    "> What is to give light must endure burning.\n> So it stood on the wall.\n>\n> > And somebody had answered.\n\n"
    "## To do\n- [x] Letter to Lisa\n- [ ] Ask about the boat at https://example.org/boats\n- Apples, and of these\n"
    "  the red ones\n  - Boskoop\n  - Elstar\n\n5. Fifth thing of a list that began elsewhere\n6. Sixth thing\n\n"
    "```\nfor (int day : week)\n    write(day);   // one line each\n```\n\n"
    "| Tree | Planted | Height |\n|---|:-:|--:|\n| Apple | 2019 | 3.20 m |\n| Quince | 2021 | 1.85 m |\n\n"
    "![The pond with ice](pond.jpg)\n\n"
    "\u0643\u0627\u0646\u062A \u0627\u0644\u0634\u0645\u0633 \u0642\u062F \u063A\u0627\u0628\u062A "
    "\u0648\u0644\u0643\u0646 \u0627\u0644\u0645\u0627\u0621 \u0627\u062D\u062A\u0641\u0638 "
    "\u0628\u0627\u0644\u0636\u0648\u0621.\n\n"
    "***\n\nEnd of the day. #garden #caf\u00E9-notes"_s};

QPalette paletteOf(const QString& look) {
  if (look == u"light") return QPalette(QColor(0xef, 0xef, 0xef));
  if (look == u"dark") return QPalette(QColor(0x30, 0x33, 0x38));
  QPalette palette(Qt::black);
  for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Button}) palette.setColor(role, Qt::black);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(role, Qt::white);
  palette.setColor(QPalette::Highlight, QColor(0x1aebff));
  palette.setColor(QPalette::HighlightedText, Qt::black);
  return palette;
}

ReadingView* makeView(const EntryContent& content, const QString& look, QWidget* parent = nullptr) {
  auto* view = new ReadingView(parent);
  view->setPalette(paletteOf(look));
  view->resize(588, content.title == everything.title ? 1560 : 620);
  view->setEntry(content);
  view->setSearchedWords({u"river"_s, u"li"_s});
  return view;
}

bool writePdf(const QString& path) {
  int left = 12;
  EntryPrinter printer([&left]() -> std::optional<PrintedEntry> {
    if (left-- == 0) return {};
    const EntryContent& content = left % 2 == 1 ? evening : everything;
    return PrintedEntry{content.title, content.details, content.text};
  });
  const QPageLayout layout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(62, 62, 62, 50));
  return printer.writePdf(path, layout) == EntryPrinter::Outcome::Printed;
}

bool grabAll(const QString& directory) {
  QDir().mkpath(directory);
  bool written = writePdf(directory + u"/entries.pdf"_s);
  for (const QString& look : {u"light"_s, u"dark"_s, u"contrast"_s}) {
    for (const EntryContent* content : {&evening, &everything}) {
      const std::unique_ptr<ReadingView> view(makeView(*content, look));
      for (const int ratio : {1, 2}) {
        QImage image(view->size() * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        view->render(&image);
        image.setDevicePixelRatio(1);
        const QString name = content == &evening ? u"evening"_s : u"everything"_s;
        written = image.save(u"%1/%2-%3@%4x.png"_s.arg(directory, name, look).arg(ratio)) && written;
      }
    }
  }
  return written;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QCommandLineParser parser;
  parser.setApplicationDescription(u"Shows entries as they are read and printed."_s);
  parser.addHelpOption();
  const QCommandLineOption grab(u"grab"_s, u"Write pictures and a PDF file and leave."_s, u"directory"_s);
  parser.addOption(grab);
  parser.process(application);
  if (parser.isSet(grab)) {
    if (grabAll(parser.value(grab))) return 0;
    std::fputs("reading-gallery: cannot write the pictures\n", stderr);
    return 1;
  }
  QTabWidget window;
  for (const QString& look : {u"light"_s, u"dark"_s, u"contrast"_s})
    for (const EntryContent* content : {&evening, &everything})
      window.addTab(makeView(*content, look, &window), look + u' ' + content->title.left(8));
  window.resize(640, 760);
  window.show();
  return application.exec();
}
