#include "controls/gallery/Scenes.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTabWidget>
#include <QVBoxLayout>

#include <cstdio>

namespace {

using namespace Qt::StringLiterals;

// Writes every scene on both panels at 1x and 2x; false when a file could not be written.
bool grabAll(const QString& directory) {
  QDir().mkpath(directory);
  bool written = true;
  for (const quillo::Scene& scene : quillo::allScenes()) {
    for (const quillo::Panel panel : {quillo::Panel::Dark, quillo::Panel::Light}) {
      for (const int ratio : {1, 2}) {
        const QString shade = panel == quillo::Panel::Dark ? u"dark"_s : u"light"_s;
        const QString file = u"%1/%2-%3@%4x.png"_s.arg(directory, scene.name, shade).arg(ratio);
        QImage image = quillo::grabScene(scene, panel, ratio);
        image.setDevicePixelRatio(1);
        written = image.save(file) && written;
      }
    }
  }
  return written;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QCommandLineParser parser;
  parser.setApplicationDescription(u"Shows every control in every state."_s);
  parser.addHelpOption();
  const QCommandLineOption grab(u"grab"_s, u"Write every scene to PNG files and leave."_s, u"directory"_s);
  parser.addOption(grab);
  parser.process(application);
  if (parser.isSet(grab)) {
    if (grabAll(parser.value(grab))) return 0;
    std::fputs("controls-gallery: cannot write the pictures\n", stderr);
    return 1;
  }

  QTabWidget window;
  window.setWindowTitle(u"Controls"_s);
  for (const quillo::Scene& scene : quillo::allScenes()) {
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(scene.make(quillo::Panel::Dark).release());
    layout->addWidget(scene.make(quillo::Panel::Light).release());
    window.addTab(page, scene.name);
  }
  window.show();
  return application.exec();
}
