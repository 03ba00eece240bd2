#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QWidget>

#include <memory>
#include <vector>

namespace quillo {

enum class Panel { Dark, Light };

// A still arrangement of controls: its states are set, not brought about by a pointer.
struct Scene {
  QString name;
  std::unique_ptr<QWidget> (*make)(Panel panel);
};

// All of them, in the order in which they are shown.
[[nodiscard]] const std::vector<Scene>& allScenes();

// The scene as it looks on a screen of `ratio` device pixels a point.
[[nodiscard]] QImage grabScene(const Scene& scene, Panel panel, double ratio);

// For building scenes: a canvas in the panel's colour, the colour itself, and a small caption on it.
[[nodiscard]] std::unique_ptr<QWidget> makeCanvas(Panel panel, const QSize& size);
[[nodiscard]] QColor panelColor(Panel panel);
void addCaption(QWidget& canvas, Panel panel, const QString& text, const QPoint& topLeft);

// Each makes one scene.
[[nodiscard]] std::unique_ptr<QWidget> makeStyleButtons(Panel panel);
[[nodiscard]] std::unique_ptr<QWidget> makePictureButtons(Panel panel);
[[nodiscard]] std::unique_ptr<QWidget> makeNinePart(Panel panel);
[[nodiscard]] std::unique_ptr<QWidget> makeSmallViews(Panel panel);
[[nodiscard]] std::unique_ptr<QWidget> makeArtwork(Panel panel);
[[nodiscard]] std::unique_ptr<QWidget> makeEntryPanel(Panel panel);

}  // namespace quillo
