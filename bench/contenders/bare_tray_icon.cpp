// The floor of the agent's start and memory: the least that a Qt program with an icon in the tray can be.
#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QPixmap picture(22, 22);
  picture.fill(Qt::white);
  QSystemTrayIcon icon{QIcon(picture)};
  icon.show();
  return QApplication::exec();
}
