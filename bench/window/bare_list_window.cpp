// The floor of a window with a list: a bare one of the journal window's size, with twenty rows in its middle.
#include <QApplication>
#include <QHBoxLayout>
#include <QListWidget>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.resize(1200, 760);
  auto* row = new QHBoxLayout(&window);
  row->setContentsMargins(220, 0, 588, 0);
  auto* list = new QListWidget;
  for (int i = 0; i < 20; ++i)
    list->addItem(QString::fromLatin1("Row %1 with the first words of an entry\nand a second line below them").arg(i));
  row->addWidget(list);
  window.show();
  return QApplication::exec();
}
