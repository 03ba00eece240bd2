#pragma once

#include "exchange/backup/BackupRestore.h"
#include "exchange/backup/BackupSettings.h"
#include "exchange/backup/JournalBackup.h"
#include "preferences/pages/PreferencePage.h"

#include <QList>
#include <QUrl>

class QLabel;
class QProgressBar;
class QPushButton;

namespace quillo {

class BackupRunner;
class BackupSchedule;
struct PreferencesServices;
struct StoredBackup;

// When backups are made by themselves, where and how many; making one now; and a new journal of one of them.
class BackupPage : public PreferencePage {
  Q_OBJECT

 public:
  BackupPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent);
  ~BackupPage() override;

 private:
  void addSchedule();
  void addKeep();
  void addFolder();
  void addMaking();
  void addRestoring();
  void applySchedule();
  void showFolder();
  void showLast();
  void listBackups();
  void showBackups(const QList<StoredBackup>& backups);
  void chooseFolder();
  void makeNow();
  void didMake(const JournalBackup::Result& result);
  void chooseFile();
  void choosePlace();
  void restoreTo(const QString& path);
  void didRestore(const BackupRestore::Result& result);
  void useRestored();
  void showRunning(bool isRunning);
  bool save(const QString& key, qint64 value, FormRow& row);

  PreferencesServices& m_services;
  BackupSettings m_applied;
  FormRow* m_scheduleRow{nullptr};
  ChoiceBox* m_often;
  ChoiceBox* m_most;
  QLabel* m_folder;
  FormRow* m_folderRow{nullptr};
  QPushButton* m_make;
  FormRow* m_makeRow{nullptr};
  QProgressBar* m_progress;
  QPushButton* m_stop;
  ChoiceBox* m_archives;
  QPushButton* m_restore;
  QPushButton* m_use;
  FormRow* m_restoreRow{nullptr};
  QString m_otherArchive;  // chosen from elsewhere
  QUrl m_restored;
  std::unique_ptr<BackupRunner> m_runner;
  std::unique_ptr<BackupRunner> m_lister;
};

}  // namespace quillo
