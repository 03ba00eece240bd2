#include "controls/Image.h"
#include "controls/gallery/Scenes.h"
#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

// Of two colours, 0 to 765.
int difference(QRgb a, QRgb b) {
  return std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
}

TEST(ArtworkTest, EveryPictureIsThereAtBothScales) {
  struct Case {
    QSizeF size;  // points
    QString names;
  };
  const Case cases[]{
      {{22, 22}, u"menubar-black menubar-white menubar-red menubar-new-entry"_s},
      {{20, 20}, u"menubar-reminder menubar-save menubar-open menubar-settings menubar-close"_s},
      {{300, 146}, u"menubar-inputbox"_s},
      {{92, 33}, u"menubar-button-blue menubar-button-blue-active menubar-button-dark menubar-button-dark-active"_s},
      {{32, 18}, u"menubar-location-toggle-on menubar-location-toggle-off"_s},
      {{14, 18}, u"menubar-location"_s},
      {{12, 14}, u"menubar-location-pin"_s},
      {{96, 96}, u"logo-quillo"_s},
      {{48, 48}, u"logo-maker"_s},
  };
  for (const Case& c : cases) {
    for (const QString& name : c.names.split(u' ')) {
      SCOPED_TRACE(name.toStdString());
      const ImageRef image = Image::imageNamed(name);
      ASSERT_NE(image, nullptr);
      EXPECT_EQ(image->size(), c.size);
      ASSERT_EQ(image->bitmaps().size(), 2U);
      EXPECT_EQ(image->bitmaps()[1].size(), (c.size * 2).toSize());
      EXPECT_EQ(Image::imageNamed(name), image) << "loaded once";
    }
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
  const std::pair<QString, Panel> cases[]{{u"menubar-black"_s, Panel::Light},
                                          {u"menubar-white"_s, Panel::Dark},
                                          {u"menubar-red"_s, Panel::Light},
                                          {u"menubar-red"_s, Panel::Dark}};
  for (const auto& [name, panel] : cases) {
    const QImage icon = Image::imageNamed(name)->bitmaps().front();
    int solid = 0;
    for (int y = 0; y < icon.height(); ++y) {
      for (int x = 0; x < icon.width(); ++x)
        solid += qAlpha(icon.pixel(x, y)) > 230 && difference(icon.pixel(x, y), panelColor(panel).rgb()) > 150;
    }
    // A shape, neither a hairline nor a blot: between an eighth and a half of the 22 x 22.
    EXPECT_GT(solid, 60) << name.toStdString();
    EXPECT_LT(solid, 242) << name.toStdString();
  }
}

TEST(ArtworkTest, ReminderSoundIsShortAndSoft) {
  QFile file(u":/quillo/sounds/quillo-reminder.wav"_s);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray data = file.readAll();
  ASSERT_EQ(data.left(4), "RIFF");
  ASSERT_EQ(data.mid(36, 4), "data");
  const auto sample = [&data](qsizetype index) {
    return std::abs(int{qFromLittleEndian<qint16>(data.constData() + 44 + 2 * index)});
  };
  const qsizetype samples = (data.size() - 44) / 2;
  EXPECT_LT(samples, 2 * 44100);
  int peak = 0;
  for (qsizetype index = 0; index < samples; ++index) peak = std::max(peak, sample(index));
  EXPECT_GT(peak, 3000);
  EXPECT_LT(peak, 12000);
  // It neither starts nor ends with a click.
  EXPECT_LT(sample(0), 50);
  EXPECT_LT(sample(samples - 1), 50);
}

// The mean difference of two pictures' colours, 0 to 255.
double meanDifference(const QImage& a, const QImage& b) {
  qint64 total = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) total += difference(a.pixel(x, y), b.pixel(x, y));
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
