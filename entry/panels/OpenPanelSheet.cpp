#include "entry/panels/OpenPanelSheet.h"

#include <QFileDialog>
#include <QFileInfo>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

class FileOrFolderDialog final : public QFileDialog {
 public:
  using QFileDialog::QFileDialog;

 protected:
  // The base would go into a folder that is chosen.
  void accept() override {
    const QStringList selected = selectedFiles();
    if (!selected.isEmpty() && QFileInfo::exists(selected.first())) QDialog::accept();
  }
};

// The drive may be unplugged: the panel would begin wherever the program was started. Every step shortens the path.
QString nearestThatExists(QString path) {
  while (!QFileInfo::exists(path) && path != QFileInfo(path).path()) path = QFileInfo(path).path();
  return path;
}

}  // namespace

void OpenPanelSheet::beginSheet(const QString& title, const QString& directory, QWidget* window,
                                std::function<void(const QString& path)> chosen) {
  // One that has ended is about to go.
  for (const QFileDialog* panel : window->findChildren<QFileDialog*>())
    if (panel->isVisible()) return;
  const QString parent = QFileInfo(directory).path();
  auto* panel =
      new FileOrFolderDialog(window, title, QFileInfo::exists(parent) ? directory : nearestThatExists(parent));
  panel->setObjectName(u"openPanel"_s);
  panel->setAttribute(Qt::WA_DeleteOnClose);
  panel->setFileMode(QFileDialog::AnyFile);
  panel->setLabelText(QFileDialog::Accept, u"Choose"_s);
  // Read-only: no folder is made here.
  panel->setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::ReadOnly);
  panel->setWindowModality(Qt::WindowModal);
  // Above the entry window, which itself stays on top.
  panel->setWindowFlag(Qt::WindowStaysOnTopHint);
  QObject::connect(panel, &QDialog::accepted, window,
                   [panel, chosen = std::move(chosen)] { chosen(panel->selectedFiles().value(0)); });
  panel->open();
}

}  // namespace quillo
