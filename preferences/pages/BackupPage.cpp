#include "preferences/pages/BackupPage.h"

#include "config/Keys.h"
#include "exchange/backup/BackupFolder.h"
#include "exchange/backup/BackupReader.h"
#include "exchange/backup/BackupRecord.h"
#include "exchange/backup/BackupRunner.h"
#include "exchange/backup/BackupSchedule.h"
#include "foundation/UserDirectories.h"
#include "preferences/controls/ChoiceBox.h"
#include "preferences/controls/Form.h"
#include "preferences/pages/PreferencesServices.h"
#include "qlcore/JournalChoice.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int progressSteps = 1000;
const QString suffix = u".quillojournal"_s;

// What is offered; another that was set elsewhere is shown, too.
constexpr struct {
  CalendarUnit unit;
  int interval;
} rhythms[] = {{CalendarUnit::Hour, 1},
               {CalendarUnit::Hour, 6},
               {CalendarUnit::Day, 1},
               {CalendarUnit::Week, 1},
               {CalendarUnit::Month, 1}};
constexpr int counts[] = {10, 20, 40, 100};

// Both in one number, by which the box finds its item.
int rhythmNumber(CalendarUnit unit, int interval) {
  return static_cast<int>(unit) * 1000 + interval;
}

QString capitalized(QString text) {
  text[0] = text[0].toUpper();
  return text;
}

QString entriesInWords(qint64 count) {
  return QLocale().toString(count) + (count == 1 ? u" entry"_s : u" entries"_s);
}

QString momentInWords(const QDateTime& moment) {
  const QDateTime local = moment.toLocalTime();
  const qint64 days = local.date().daysTo(QDate::currentDate());
  const QString day = days == 0    ? u"today"_s
                      : days == 1  ? u"yesterday"_s
                      : days == -1 ? u"tomorrow"_s
                                   : local.toString(u"d MMMM yyyy"_s);
  return day + local.toString(u" HH:mm"_s);
}

}  // namespace

BackupPage::BackupPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent)
    : PreferencePage(u"Backup"_s, store, parent),
      m_services(services),
      m_applied(BackupSettings::of(store.list())),
      m_often(new ChoiceBox(this)),
      m_most(new ChoiceBox(this)),
      m_folder(makeFormLabel({}, {}, this)),
      m_make(makeButton(u"Back Up Now"_s, u"makeBackup"_s)),
      m_progress(new QProgressBar(this)),
      m_stop(makeButton(u"Stop"_s, u"stopBackup"_s)),
      m_archives(new ChoiceBox(this)),
      m_restore(makeButton(u"Restore…"_s, u"restoreBackup"_s)),
      m_use(makeButton(u"Use This Journal"_s, u"useRestored"_s)),
      m_runner(std::make_unique<BackupRunner>()),
      m_lister(std::make_unique<BackupRunner>()) {
  addSchedule();
  addKeep();
  addFolder();
  addMaking();
  addRestoring();
  column().addStretch();
  connect(m_runner.get(), &BackupRunner::progressed, this,
          [this](double done) { m_progress->setValue(static_cast<int>(std::lround(done * progressSteps))); });
  connect(m_runner.get(), &BackupRunner::made, this, &BackupPage::didMake);
  connect(m_runner.get(), &BackupRunner::restored, this, &BackupPage::didRestore);
  connect(m_lister.get(), &BackupRunner::listed, this, &BackupPage::showBackups);
}

BackupPage::~BackupPage() = default;

bool BackupPage::save(const QString& key, qint64 value, FormRow& row) {
  QString reason;
  const bool isSaved = store().set(key, PropertyListValue(value), &reason);
  row.setError(reason);
  return isSaved;
}

void BackupPage::addSchedule() {
  m_scheduleRow = addSwitch(u"By itself"_s, Key::autoBackupEnabled);
  m_often->setObjectName(Key::autoBackupFrequency);
  FormRow* row = form().addRow(u"How often"_s, {m_often});
  connect(m_often, &QComboBox::activated, this, [this, row](int index) {
    const int number = m_often->itemData(index).toInt();
    QString reason;
    store().set({{Key::autoBackupFrequency, PropertyListValue(qint64{number / 1000})},
                 {Key::autoBackupInterval, PropertyListValue(qint64{number % 1000})}},
                &reason);
    row->setError(reason);
  });
  addShower([this] {
    const BackupSettings settings = BackupSettings::of(store().list());
    m_often->clear();
    const auto add = [this](CalendarUnit unit, int interval) {
      const BackupSettings named{.unit = unit, .interval = interval};
      m_often->addItem(capitalized(named.inWords()), rhythmNumber(unit, interval));
    };
    for (const auto& [unit, interval] : rhythms) add(unit, interval);
    const int number = rhythmNumber(settings.unit, settings.interval);
    if (m_often->findData(number) < 0) add(settings.unit, settings.interval);
    m_often->setCurrentIndex(m_often->findData(number));
    applySchedule();
  });
}

// Also where the settings were changed by another page, or another program.
void BackupPage::applySchedule() {
  const BackupSettings settings = BackupSettings::of(store().list());
  BackupSchedule* schedule = m_services.backupSchedule;
  if (!schedule) return;
  if (settings != m_applied) {
    m_applied = settings;
    QString reason;
    const auto outcome = schedule->apply(settings, &reason);
    const bool isWanting = outcome == BackupSchedule::Outcome::NotStarted || outcome == BackupSchedule::Outcome::Failed;
    const QString problem = isWanting ? u"Not started by itself yet: "_s + reason : QString();
    // After the switch has shown that it is saved.
    QMetaObject::invokeMethod(
        this, [this, problem] { m_scheduleRow->setError(problem); }, Qt::QueuedConnection);
  }
  const auto next = settings.isEnabled ? schedule->next() : std::nullopt;
  m_scheduleRow->setNote(next ? u"Next: %1. Quillo need not be open."_s.arg(momentInWords(*next))
                              : u"Made by your desktop's session; Quillo need not be open."_s);
}

void BackupPage::addKeep() {
  m_most->setObjectName(Key::autoBackupMaxCount);
  FormRow* row = form().addRow(u"Keep"_s, {m_most});
  row->setNote(u"Older ones thin out by day, week and month."_s);
  connect(m_most, &QComboBox::activated, this,
          [this, row](int index) { save(Key::autoBackupMaxCount, m_most->itemData(index).toLongLong(), *row); });
  addShower([this] {
    const int most = BackupSettings::of(store().list()).most;
    m_most->clear();
    for (const int count : counts) m_most->addItem(u"At most %1"_s.arg(count), count);
    m_most->addItem(u"All of them"_s, 0);
    if (m_most->findData(most) < 0) m_most->addItem(u"At most %1"_s.arg(most), most);
    m_most->setCurrentIndex(m_most->findData(most));
  });
}

void BackupPage::addFolder() {
  m_folder->setObjectName(Key::autoBackupLocationBookmark);
  m_folder->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  m_folder->setMinimumSize(200, 30);
  m_folderRow = form().addRow(u"Folder"_s, {m_folder});
  QPushButton* choose = makeButton(u"Choose…"_s, u"chooseBackupFolder"_s);
  m_folderRow->addFieldAtEnd(choose);
  connect(choose, &QPushButton::clicked, this, &BackupPage::chooseFolder);
  addShower([this] { showFolder(); });
}

void BackupPage::showFolder() {
  const QString folder = store().config().backupRootURL().toLocalFile();
  const auto missing = store().config().whyBackupRootIsMissing();
  m_folder->setText(missing ? u"Not there just now"_s : pathInWords(folder));
  m_folderRow->setError(missing ? missing->localizedDescription : QString());
  const QString home = UserDirectories::current().home;
  m_folderRow->setNote(folder.startsWith(home + u'/') ? u"A folder of another disk outlives this one."_s : QString());
}

void BackupPage::chooseFolder() {
  auto* dialog = new QFileDialog(window(), u"Keep Backups In"_s, UserDirectories::current().home);
  dialog->setObjectName(u"backupFolderPanel"_s);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::Directory);
  dialog->setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::ShowDirsOnly);
  dialog->setLabelText(QFileDialog::Accept, u"Choose"_s);
  connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
    Error error;
    const bool isSet = store().config().setBackupRootURL(QUrl::fromLocalFile(path), &error);
    if (isSet) store().tell(Notice::settingsDidChange);
    showValues();
    if (!isSet) m_folderRow->setError(error.localizedDescription);
  });
  dialog->open();
}

void BackupPage::addMaking() {
  m_progress->setRange(0, progressSteps);
  m_progress->setTextVisible(false);
  m_progress->setFixedWidth(190);
  m_progress->setAccessibleName(u"Backing up"_s);
  m_makeRow = form().addRow(u"Now"_s, {m_make, m_progress, m_stop});
  m_progress->hide();
  m_stop->hide();
  connect(m_make, &QPushButton::clicked, this, &BackupPage::makeNow);
  connect(m_stop, &QPushButton::clicked, this, [this] {
    m_runner->stop();
    m_stop->setEnabled(false);
  });
  addShower([this] { showLast(); });
}

void BackupPage::showLast() {
  const BackupRecord record = BackupRecord::of(UserDirectories::current());
  const bool hasFailed = !record.failure.isEmpty();
  m_makeRow->setNote(record.lastMade ? u"The last whole one: %1."_s.arg(momentInWords(record.lastMade->toDateTime()))
                                     : u"There is none yet."_s);
  m_makeRow->setError(hasFailed && record.lastTry ? u"The last one failed, %1: %2"_s.arg(
                                                        momentInWords(record.lastTry->toDateTime()), record.failure)
                                                  : QString());
  m_make->setEnabled(!m_runner->isRunning() && store().config().configuredJournalFileURL().has_value());
  listBackups();
}

void BackupPage::showRunning(bool isRunning) {
  const bool hadKeyboard = m_stop->hasFocus();
  m_progress->setValue(0);
  m_progress->setVisible(isRunning);
  m_stop->setEnabled(true);
  m_stop->setVisible(isRunning);
  // In its place, since there is not room for all of them; the keyboard stays in the row.
  m_make->setVisible(!isRunning);
  m_make->setEnabled(!isRunning);
  if (isRunning) m_stop->setFocus();
  if (hadKeyboard) m_make->setFocus();
  m_restore->setEnabled(!isRunning);
}

void BackupPage::makeNow() {
  const auto journal = store().config().configuredJournalFileURL();
  if (!journal) return;
  if (const auto missing = store().config().whyBackupRootIsMissing()) {
    m_makeRow->setError(missing->localizedDescription);
    return;
  }
  m_makeRow->setError({});
  const BackupSettings settings = BackupSettings::of(store().list());
  if (m_runner->make({.journal = journal->toLocalFile(),
                      .folder = store().config().backupRootURL().toLocalFile(),
                      .thinning = settings.thinning()},
                     UserDirectories::current()))
    showRunning(true);
}

void BackupPage::didMake(const JournalBackup::Result& result) {
  showRunning(false);
  showValues();
  if (result.outcome == JournalBackup::Outcome::Stopped) m_makeRow->setNote(u"Stopped: there is no new backup."_s);
  if (result.outcome == JournalBackup::Outcome::Made && result.isComplete)
    m_makeRow->setNote(u"Made: %1, read again and compared."_s.arg(entriesInWords(result.entries)));
}

void BackupPage::addRestoring() {
  m_archives->setObjectName(u"archives"_s);
  m_archives->setAccessibleName(u"Backup to restore"_s);
  m_archives->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  form().addRow(u"Get back"_s, {m_archives});
  m_restoreRow = form().addRow({}, {m_restore, m_use});
  m_use->hide();
  connect(m_archives, &QComboBox::activated, this, [this](int index) {
    if (index == m_archives->count() - 1) chooseFile();
  });
  connect(m_restore, &QPushButton::clicked, this, &BackupPage::choosePlace);
  connect(m_use, &QPushButton::clicked, this, &BackupPage::useRestored);
  showBackups({});
  m_restoreRow->setNote(u"It becomes a new journal; yours stays as it is."_s);
}

void BackupPage::listBackups() {
  m_lister->list(store().config().backupRootURL().toLocalFile());
}

void BackupPage::showBackups(const QList<StoredBackup>& backups) {
  const QString chosen = m_otherArchive.isEmpty() ? m_archives->currentData().toString() : m_otherArchive;
  m_archives->clear();
  for (const StoredBackup& one : backups)
    if (one.manifest)
      m_archives->addItem(
          u"%1, %2"_s.arg(capitalized(momentInWords(one.begun())), entriesInWords(one.manifest->entries)), one.path);
  if (!m_otherArchive.isEmpty() && m_archives->findData(m_otherArchive) < 0)
    m_archives->addItem(QFileInfo(m_otherArchive).fileName(), m_otherArchive);
  const bool isEmpty = m_archives->count() == 0;
  if (isEmpty) m_archives->addItem(u"There is no backup yet"_s);
  m_archives->addItem(u"Another file…"_s);
  m_archives->setCurrentIndex(std::max(0, chosen.isEmpty() ? 0 : m_archives->findData(chosen)));
  m_restore->setEnabled(!isEmpty && !m_runner->isRunning());
}

void BackupPage::chooseFile() {
  m_archives->setCurrentIndex(0);
  auto* dialog = new QFileDialog(window(), u"Choose Backup"_s, store().config().backupRootURL().toLocalFile(),
                                 u"Backups (*.quillojournal.tar.zst);;All files (*)"_s);
  dialog->setObjectName(u"archivePanel"_s);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFile);
  dialog->setOption(QFileDialog::DontUseNativeDialog);
  connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
    Error error;
    const bool isBackup = BackupReader::open(path, &error) != nullptr;
    m_restoreRow->setError(isBackup ? QString() : error.localizedDescription);
    if (isBackup) m_otherArchive = path;
    listBackups();
  });
  dialog->open();
}

void BackupPage::choosePlace() {
  const QString archive = m_archives->currentData().toString();
  Error error;
  const auto reader = BackupReader::open(archive, &error);
  m_restoreRow->setError(reader ? QString() : error.localizedDescription);
  if (!reader) return;
  const auto journal = store().config().configuredJournalFileURL();
  QString folder = journal ? QFileInfo(journal->toLocalFile()).path() : UserDirectories::current().documents;
  if (!QFileInfo(folder).isDir()) folder = UserDirectories::current().home;
  auto* dialog = new QFileDialog(window(), u"Restore as a New Journal"_s, folder);
  dialog->setObjectName(u"restorePanel"_s);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  // What is there already is refused, and so there is nothing to be asked.
  dialog->setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::DontConfirmOverwrite);
  dialog->setLabelText(QFileDialog::Accept, u"Restore"_s);
  dialog->selectFile(QFileInfo(BackupRestore::freePlace(folder, reader->manifest().journal)).fileName());
  connect(dialog, &QFileDialog::fileSelected, this, &BackupPage::restoreTo);
  dialog->open();
}

void BackupPage::restoreTo(const QString& path) {
  m_restored.clear();
  m_use->hide();
  if (m_runner->restore(
          {.archive = m_archives->currentData().toString(), .journal = path.endsWith(suffix) ? path : path + suffix}))
    showRunning(true);
}

void BackupPage::didRestore(const BackupRestore::Result& result) {
  showRunning(false);
  m_restoreRow->setError({});
  switch (result.outcome) {
    case BackupRestore::Outcome::Restored:
      m_restored = result.journal;
      m_restoreRow->setNote(u"%1 in %2, compared with the backup."_s.arg(capitalized(entriesInWords(result.entries)),
                                                                         pathInWords(result.journal.toLocalFile())));
      m_use->show();
      break;
    case BackupRestore::Outcome::Stopped:
      m_restoreRow->setNote(u"Stopped: nothing was restored."_s);
      break;
    case BackupRestore::Outcome::Failed:
      m_restoreRow->setError(result.error.localizedDescription);
      break;
  }
  showValues();
}

void BackupPage::useRestored() {
  Error error;
  const bool isUsed = useJournal(store().config(), m_restored, /*create=*/false, &error);
  m_restoreRow->setError(isUsed ? QString() : error.localizedDescription);
  if (isUsed) {
    m_services.settings.distributedCenter.postNotification(Notice::journalPackagePathDidChange);
    m_restoreRow->setNote(u"Quillo uses it now; the one before stays as it is, where it is."_s);
    m_use->hide();
  }
  showValues();
}

}  // namespace quillo
