#pragma once

#include "foundation/Bundle.h"

#include <QObject>

#include <memory>
#include <optional>

class QTextBrowser;
class QWidget;

namespace Ui {
class AboutWindow;
}

namespace quillo {

class LegalWindowController;
class Workspace;

// The About window: version, credits whose names are links, the legal text as a sheet, and two logos that open the web
// sites of the product and its maker. Closing the window hides it. Main thread only.
class AboutWindowController final : public QObject {
  Q_OBJECT

 public:
  // The bundle is the program's, for version and texts. Pages are opened by the workspace, which must outlive the
  // object; what cannot be opened is passed over in silence.
  AboutWindowController(Workspace& workspace, Bundle bundle);
  ~AboutWindowController() override;

  // Shows the window in front of all others, with the keyboard.
  void showWindow();
  [[nodiscard]] QWidget& window() const { return *m_window; }
  [[nodiscard]] QTextBrowser& creatorText() const { return *m_creatorText; }
  // Null until the legal text was asked for; then always the same.
  [[nodiscard]] LegalWindowController* legalSheet() const { return m_legalSheet.get(); }

  // The bundle's value for the key, as the user's language has it, else as it is; nothing when it has none.
  [[nodiscard]] std::optional<PropertyListValue> infoValueForKey(const QString& key) const;

  void legalButtonClicked();
  void appLogoButtonClicked();
  void brandLogoButtonClicked();

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void awakeFromNib();
  void makeCreatorText();
  void fillCreatorText();
  void styleLinks();
  void didEndSheet(int returnCode);

  Workspace& m_workspace;
  Bundle m_bundle;
  std::unique_ptr<QWidget> m_window;
  std::unique_ptr<Ui::AboutWindow> m_ui;
  QTextBrowser* m_creatorText{nullptr};
  std::unique_ptr<LegalWindowController> m_legalSheet;
};

}  // namespace quillo
