#pragma once

#include <QListWidget>

namespace quillo {

// The names of the pages, the chosen one on the accent. The arrow keys go through them.
class PageList : public QListWidget {
  Q_OBJECT

 public:
  explicit PageList(QWidget* parent = nullptr);
};

}  // namespace quillo
