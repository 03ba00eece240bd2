#include "controls/Image.h"
#include "controls/gallery/Scenes.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(ArtworkTest, EveryPictureIsThereAtBothScales) {
  struct Case {
    QString name;
    QSizeF size;  // points
  };
  const Case cases[]{
      {u"menubar-black"_s, {22, 22}},
      {u"menubar-white"_s, {22, 22}},
      {u"menubar-red"_s, {22, 22}},
      {u"menubar-inputbox"_s, {300, 146}},
      {u"menubar-button-blue"_s, {92, 33}},
      {u"menubar-button-blue-active"_s, {92, 33}},
      {u"menubar-button-dark"_s, {92, 33}},
      {u"menubar-button-dark-active"_s, {92, 33}},
      {u"menubar-location-toggle-on"_s, {32, 18}},
      {u"menubar-location-toggle-off"_s, {32, 18}},
      {u"menubar-location"_s, {14, 18}},
      {u"menubar-location-pin"_s, {12, 14}},
      {u"menubar-new-entry"_s, {22, 22}},
      {u"menubar-reminder"_s, {20, 20}},
      {u"menubar-save"_s, {20, 20}},
      {u"menubar-open"_s, {20, 20}},
      {u"menubar-settings"_s, {20, 20}},
      {u"menubar-close"_s, {20, 20}},
      {u"logo-quillo"_s, {96, 96}},
      {u"logo-maker"_s, {48, 48}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name.toStdString());
    const ImageRef image = Image::imageNamed(c.name);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->size(), c.size);
    ASSERT_EQ(image->bitmaps().size(), 2U);
    EXPECT_EQ(image->bitmaps()[1].size(), (c.size * 2).toSize());
    EXPECT_EQ(Image::imageNamed(c.name), image) << "loaded once";
  }
  EXPECT_EQ(Image::imageNamed(u"no-such-picture"_s), nullptr);
}

TEST(ArtworkTest, ApplicationIconIsThereInEverySize) {
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
    const QImage icon(u":/quillo/icons/hicolor/%1x%1/apps/quillo-agent.png"_s.arg(size));
    EXPECT_EQ(icon.size(), QSize(size, size));
  }
}

TEST(ArtworkTest, StatusIconsStandOutOnTheirPanels) {
  struct Case {
    QString name;
    Panel panel;
  };
  for (const Case& c : {Case{u"menubar-black"_s, Panel::Light}, Case{u"menubar-white"_s, Panel::Dark},
                        Case{u"menubar-red"_s, Panel::Light}, Case{u"menubar-red"_s, Panel::Dark}}) {
    const QImage icon = Image::imageNamed(c.name)->bitmaps().front();
    int solid = 0;
    for (int y = 0; y < icon.height(); ++y) {
      for (int x = 0; x < icon.width(); ++x) {
        const QColor color = icon.pixelColor(x, y);
        const QColor panel = panelColor(c.panel);
        const int distance = std::abs(color.red() - panel.red()) + std::abs(color.green() - panel.green()) +
                             std::abs(color.blue() - panel.blue());
        solid += color.alpha() > 230 && distance > 150;
      }
    }
    // A shape, neither a hairline nor a blot: between an eighth and a half of the 22 x 22.
    EXPECT_GT(solid, 60) << c.name.toStdString();
    EXPECT_LT(solid, 242) << c.name.toStdString();
  }
}

TEST(ArtworkTest, ReminderSoundIsShortAndSoft) {
  QFile file(u":/quillo/sounds/quillo-reminder.wav"_s);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray data = file.readAll();
  ASSERT_EQ(data.left(4), "RIFF");
  ASSERT_EQ(data.mid(36, 4), "data");
  const auto sample = [&data](qsizetype index) {
    return static_cast<qint16>(static_cast<quint8>(data[44 + 2 * index]) |
                               (static_cast<quint8>(data[45 + 2 * index]) << 8));
  };
  const qsizetype samples = (data.size() - 44) / 2;
  EXPECT_LT(samples, 2 * 44100);
  int peak = 0;
  for (qsizetype index = 0; index < samples; ++index) peak = std::max(peak, std::abs(int{sample(index)}));
  EXPECT_GT(peak, 3000);
  EXPECT_LT(peak, 12000);
  // It neither starts nor ends with a click.
  EXPECT_LT(std::abs(int{sample(0)}), 50);
  EXPECT_LT(std::abs(int{sample(samples - 1)}), 50);
}

// The mean difference of two pictures' colours, 0 to 255.
double meanDifference(const QImage& a, const QImage& b) {
  qint64 total = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      const QRgb p = a.pixel(x, y);
      const QRgb q = b.pixel(x, y);
      total += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
    }
  }
  return static_cast<double>(total) / (3.0 * a.width() * a.height());
}

TEST(SceneTest, LooksTheSameAtBothScales) {
  for (const Scene& scene : allScenes()) {
    for (const Panel panel : {Panel::Dark, Panel::Light}) {
      SCOPED_TRACE(scene.name.toStdString());
      const QImage once = grabScene(scene, panel, 1);
      QImage twice = grabScene(scene, panel, 2);
      ASSERT_EQ(twice.size(), once.size() * 2);
      twice.setDevicePixelRatio(1);
      const QImage halved = twice.scaled(once.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
      // Text and hairlines differ a little; a picture of the wrong scale or in the wrong place differs a lot.
      EXPECT_LT(meanDifference(once, halved), 3.0);
      QImage blank = once;
      blank.fill(panelColor(panel));
      EXPECT_GT(meanDifference(once, blank), 1.0) << "nothing on it";
    }
  }
}

}  // namespace
}  // namespace quillo
