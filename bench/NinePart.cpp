// Drawing a nine-part picture that was cut once, against cutting it for every drawing and against Qt's own drawing of a
// border picture. Time is that of the first; "cutting" and "qt" are how many times longer the others take.

#include "Ratio.h"
#include "controls/NinePartScaledImage.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <qdrawutil.h>

#include <benchmark/benchmark.h>

namespace quillo {

namespace {

struct Picture {
  const char* benchmark;
  const char* name;
  // The corners of the part that stretches, y upwards, and the size to draw, in points.
  QPointF topLeft, bottomRight;
  QSize size;
};

const Picture pictures[] = {
    {"input_box", "menubar-inputbox", {5, 141}, {295, 5}, {302, 146}},
    {"button", "menubar-button-dark", {15, 18}, {71, 15}, {240, 34}},
};

void draw(benchmark::State& state, const Picture& picture) {
  static int argc = 1;
  static char name[] = "bench";
  static char* argv[] = {name, nullptr};
  if (!qApp) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication application(argc, argv);
  }
  const ImageRef source = Image::imageNamed(QLatin1StringView(picture.name));
  if (!source) return state.SkipWithError("no such picture");
  const double ratio = static_cast<double>(state.range(0)) / 100;
  QImage target((QSizeF(picture.size) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
  target.setDevicePixelRatio(ratio);
  target.fill(Qt::white);
  QPainter painter(&target);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  const QRect rect(QPoint(0, 0), picture.size);

  const NinePartScaledImage cut(*source, picture.topLeft, picture.bottomRight);
  const QImage& bitmap = *source->bitmapForRatio(ratio);
  const QPixmap pixmap = QPixmap::fromImage(bitmap);
  const QSizeF size = source->size();
  const QMargins margins = QMarginsF(picture.topLeft.x(), size.height() - picture.topLeft.y(),
                                     size.width() - picture.bottomRight.x(), picture.bottomRight.y())
                               .toMargins();
  const QMargins sourceMargins = margins * bitmap.devicePixelRatio();

  const auto once = [&] { cut.drawInRect(painter, rect); };
  const auto cutting = [&] { drawNinePartScaledInRect(*source, painter, rect, picture.topLeft, picture.bottomRight); };
  const auto qt = [&] {
    qDrawBorderPixmap(&painter, rect, margins, pixmap, QRect(QPoint(0, 0), pixmap.size()), sourceMargins);
  };
  for (auto _ : state) once();
  const auto [own, everyTime, qts] = secondsByTurns(once, cutting, qt);
  state.counters["cutting"] = everyTime / own;
  state.counters["qt"] = qts / own;
}

const bool registered = [] {
  for (const Picture& picture : pictures)
    benchmark::RegisterBenchmark(picture.benchmark, [&picture](benchmark::State& state) { draw(state, picture); })
        ->ArgName("percent")
        ->Arg(100)
        ->Arg(150)
        ->Arg(200)
        ->Iterations(200);
  return true;
}();

}  // namespace
}  // namespace quillo
