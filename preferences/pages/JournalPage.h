#pragma once

#include "preferences/pages/PreferencePage.h"
#include "qlcore/JournalMove.h"

#include <QUrl>

class QLabel;
class QProgressBar;
class QPushButton;

namespace quillo {

class JournalMover;
struct PreferencesServices;

// Where the journal is, and how another takes its place or it moves to another folder.
class JournalPage : public PreferencePage {
  Q_OBJECT

 public:
  JournalPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent);
  ~JournalPage() override;

 private:
  void addLocation();
  void addOthers();
  void addMove();
  void showLocation();
  void choose();
  void createNew();
  void use(const QUrl& location, bool create);
  void chooseFolder();
  void moveTo(const QString& folder);
  void didMove(const JournalMove::Result& result);
  bool configure(const QUrl& location, Error* error);

  PreferencesServices& m_services;
  QLabel* m_name;
  QPushButton* m_open;
  FormRow* m_nameRow{nullptr};
  FormRow* m_otherRow{nullptr};
  QPushButton* m_move;
  QPushButton* m_stop;
  QProgressBar* m_progress;
  FormRow* m_moveRow{nullptr};
  std::unique_ptr<JournalMover> m_mover;
};

}  // namespace quillo
