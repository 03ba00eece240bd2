#include "preferences/pages/JournalPage.h"

#include "config/Keys.h"
#include "controls/Fonts.h"
#include "entry/session/JournalAccess.h"
#include "entry/session/OpenPanel.h"
#include "foundation/UserDirectories.h"
#include "platform/Workspace.h"
#include "preferences/controls/Form.h"
#include "preferences/pages/PreferencesServices.h"
#include "qlcore/JournalChoice.h"
#include "qlcore/JournalMover.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

const QString suffix = u".quillojournal"_s;
constexpr int progressSteps = 1000;

// Not every user has a folder of documents.
QString folderToBeginIn() {
  const UserDirectories& user = UserDirectories::current();
  return QFileInfo(user.documents).isDir() ? user.documents : user.home;
}

// Takes the name of a journal that is there as an answer, and does not go into its folder.
class CreatePanel : public QFileDialog {
 public:
  using QFileDialog::QFileDialog;

  void accept() override {
    const QStringList files = selectedFiles();
    if (files.size() != 1 || !files[0].endsWith(suffix)) return QFileDialog::accept();
    QDialog::accept();
    Q_EMIT fileSelected(files[0]);
  }
};

}  // namespace

JournalPage::JournalPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent)
    : PreferencePage(u"Journal"_s, store, parent),
      m_services(services),
      m_name(makeFormLabel({}, {}, this)),
      m_open(makeButton(u"Show in Files"_s, u"openJournalFolder"_s)),
      m_move(makeButton(u"Move…"_s, u"moveJournal"_s)),
      m_stop(makeButton(u"Stop"_s, u"stopMove"_s)),
      m_progress(new QProgressBar(this)) {
  addLocation();
  addOthers();
  addMove();
  addShower([this] { showLocation(); });
  column().addStretch();
}

JournalPage::~JournalPage() = default;

void JournalPage::addLocation() {
  m_name->setObjectName(Key::journalPackageURL);
  m_name->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  m_name->setMinimumHeight(30);
  m_nameRow = form().addRow(u"Journal"_s, {m_name});
  form().addRow({}, {m_open});
  connect(m_open, &QPushButton::clicked, this, [this] {
    const auto location = store().config().configuredJournalFileURL();
    if (location && !m_services.workspace.openURL(*location))
      m_nameRow->setError(u"No installed program shows folders."_s);
  });
}

void JournalPage::addOthers() {
  auto* existing = makeButton(u"Choose Another…"_s, u"chooseJournal"_s);
  auto* created = makeButton(u"Create New…"_s, u"createJournal"_s);
  m_otherRow = form().addRow(u"Use another"_s, {existing, created});
  m_otherRow->setNote(u"The one that is used now stays as it is, where it is."_s);
  connect(existing, &QPushButton::clicked, this, &JournalPage::choose);
  connect(created, &QPushButton::clicked, this, &JournalPage::createNew);
}

void JournalPage::addMove() {
  m_progress->setRange(0, progressSteps);
  m_progress->setTextVisible(false);
  m_progress->setFixedWidth(190);
  m_progress->setAccessibleName(u"Moving the journal"_s);
  m_moveRow = form().addRow(u"Another folder"_s, {m_move, m_progress, m_stop});
  m_moveRow->setNote(u"The journal is copied and checked before the old folder goes to the Trash."_s);
  m_progress->hide();
  m_stop->hide();
  connect(m_move, &QPushButton::clicked, this, &JournalPage::chooseFolder);
  connect(m_stop, &QPushButton::clicked, this, [this] {
    if (m_mover) m_mover->stop();
    m_stop->setEnabled(false);
  });
}

void JournalPage::showLocation() {
  const auto location = store().config().configuredJournalFileURL();
  const QString path = location ? location->toLocalFile() : QString();
  m_name->setText(path.isEmpty() ? u"None is chosen yet"_s : QFileInfo(path).completeBaseName());
  m_nameRow->setNote(path.isEmpty() ? QString() : u"In "_s + pathInWords(QFileInfo(path).path()));
  m_open->setEnabled(!path.isEmpty());
  m_move->setEnabled(!path.isEmpty() && !(m_mover && m_mover->isMoving()));
  m_nameRow->setError(!path.isEmpty() && !haveAccessToJournal(location) ? u"It cannot be written to just now."_s
                                                                        : QString());
}

void JournalPage::choose() {
  m_services.openPanel.beginSheet(u"Choose Quillo Journal"_s, UserDirectories::current().documents, window(),
                                  [this](const QString& path) { use(QUrl::fromLocalFile(path), /*create=*/false); });
}

void JournalPage::createNew() {
  auto* dialog = new CreatePanel(window(), u"Create Quillo Journal"_s);
  dialog->setObjectName(u"createPanel"_s);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  dialog->setOption(QFileDialog::DontUseNativeDialog);
  dialog->setLabelText(QFileDialog::Accept, u"Create"_s);
  dialog->setDirectory(folderToBeginIn());
  dialog->selectFile(u"Journal"_s + suffix);
  // Below the sheet's own question it would replace a journal; ours refuses what is there already.
  dialog->setOption(QFileDialog::DontConfirmOverwrite);
  connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
    const QString name = path.endsWith(suffix) ? path : path + suffix;
    use(QUrl::fromLocalFile(name), /*create=*/true);
  });
  dialog->open();
}

void JournalPage::use(const QUrl& location, bool create) {
  Error error;
  const bool isUsed = useJournal(store().config(), location, create, &error);
  m_otherRow->setError(isUsed ? QString() : error.localizedDescription);
  if (isUsed) m_services.settings.distributedCenter.postNotification(Notice::journalPackagePathDidChange);
  showValues();
}

void JournalPage::chooseFolder() {
  auto* dialog = new QFileDialog(window(), u"Move the Journal To"_s, folderToBeginIn());
  dialog->setObjectName(u"movePanel"_s);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::Directory);
  dialog->setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::ShowDirsOnly);
  dialog->setLabelText(QFileDialog::Accept, u"Move Here"_s);
  connect(dialog, &QFileDialog::fileSelected, this, &JournalPage::moveTo);
  dialog->open();
}

void JournalPage::moveTo(const QString& folder) {
  const auto location = store().config().configuredJournalFileURL();
  if (!location) return;
  if (!m_mover) {
    m_mover = std::make_unique<JournalMover>();
    connect(m_mover.get(), &JournalMover::progressed, this,
            [this](double done) { m_progress->setValue(static_cast<int>(std::lround(done * progressSteps))); });
    connect(m_mover.get(), &JournalMover::finished, this, &JournalPage::didMove);
  }
  m_moveRow->setError({});
  m_progress->setValue(0);
  m_progress->show();
  m_stop->setEnabled(true);
  m_stop->show();
  m_move->setEnabled(false);
  m_mover->start({.journal = location->toLocalFile(),
                  .folder = folder,
                  .configure = [this](const QUrl& to, Error* error) { return configure(to, error); }});
}

bool JournalPage::configure(const QUrl& location, Error* error) {
  if (!useJournal(store().config(), location, /*create=*/false, error)) return false;
  m_services.settings.distributedCenter.postNotification(Notice::journalPackagePathDidChange);
  return true;
}

void JournalPage::didMove(const JournalMove::Result& result) {
  m_progress->hide();
  m_stop->hide();
  switch (result.outcome) {
    case JournalMove::Outcome::Moved:
      m_moveRow->setNote(u"It was moved; all of it is in the new folder."_s);
      m_moveRow->setError(result.error.localizedDescription);
      break;
    case JournalMove::Outcome::Stopped:
      m_moveRow->setNote(u"Stopped: the journal is where it was."_s);
      break;
    case JournalMove::Outcome::Failed:
      m_moveRow->setError(result.error.localizedDescription);
      break;
  }
  showValues();
}

}  // namespace quillo
