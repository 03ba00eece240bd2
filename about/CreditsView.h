#pragma once

#include <QTextBrowser>

namespace quillo {

// The block of credits, which begins with a link. The keyboard goes from link to link; the view itself is no stop of
// its own, where nothing would be seen of the focus.
class CreditsView : public QTextBrowser {
  Q_OBJECT

 public:
  explicit CreditsView(QWidget* parent = nullptr) : QTextBrowser(parent) {}

 protected:
  void focusInEvent(QFocusEvent* event) override;
  bool focusNextPrevChild(bool next) override;
};

}  // namespace quillo
