#pragma once

#include "foundation/Bundle.h"

#include <QObject>

#include <functional>
#include <memory>

class QPlainTextEdit;
class QWidget;

namespace Ui {
class LegalWindow;
}

namespace quillo {

// The acknowledgements, from the bundle's "LegalAcknowledgements.txt", to read as a sheet on another window. A file
// that is missing or is not plain ASCII leaves the text empty. Main thread only.
class LegalWindowController final : public QObject {
  Q_OBJECT

 public:
  explicit LegalWindowController(Bundle bundle);
  ~LegalWindowController() override;

  // Shows the text in front of `window`, which is dead until the sheet ends; `didEnd` is then told the return code.
  // Nothing while the sheet is shown. The window must outlive the sheet.
  void beginSheet(QWidget& window, std::function<void(int returnCode)> didEnd);
  void orderOut();
  // Ends the sheet with the return code 1.
  void closeButtonClicked();

  [[nodiscard]] QWidget& window() const { return *m_window; }
  [[nodiscard]] QPlainTextEdit& textView() const;

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void windowDidLoad();

  Bundle m_bundle;
  std::unique_ptr<QWidget> m_window;
  std::unique_ptr<Ui::LegalWindow> m_ui;
  std::function<void(int)> m_didEnd;
};

}  // namespace quillo
