#pragma once

#include "preferences/pages/PreferencesServices.h"

#include <QWidget>

class QListWidget;
class QStackedWidget;

namespace quillo {

class PreferencePage;

// The window of preferences: the pages' names at the left, the chosen one at the right. Every change is saved as it is
// made, and what other programs change shows at once. Escape and Ctrl+W close it.
class PreferencesWindow : public QWidget {
  Q_OBJECT

 public:
  explicit PreferencesWindow(PreferencesServices services);
  ~PreferencesWindow() override;

  // In the order in which they are listed.
  enum Page { General, Journal, Backup, Reminders, PlaceAndWeather, Writing, Advanced, pages };

  // In front, with the settings as they are now.
  void showWindow();
  void showPage(Page page);
  [[nodiscard]] PreferencePage* currentPage() const;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void makePageList();
  [[nodiscard]] PreferencePage* makePage(Page page);
  void pageWasChosen(int index);
  void applyColors();

  PreferencesServices m_services;
  PreferenceStore m_store;
  QListWidget* m_list;
  QStackedWidget* m_stack;
};

}  // namespace quillo
