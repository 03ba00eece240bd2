#include "journal/exchange/ExportDialog.h"

#include "controls/Fonts.h"
#include "foundation/UserDirectories.h"
#include "preferences/controls/ChoiceBox.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/TickBox.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Not every user has a folder of documents.
QString folderToBeginIn() {
  const UserDirectories& user = UserDirectories::current();
  return QFileInfo(user.documents).isDir() ? user.documents : user.home;
}

bool isThere(const QString& path) {
  const QFileInfo file(path);
  return file.exists() || file.isSymLink();
}

// "Journal.pdf", or "Journal 2.pdf" where that is there. Ends at a name that is free: there are no more files than
// that.
QString freePath(const QString& folder, const QString& name, const ExportFormat& format) {
  const QString suffix = *format.suffix ? u'.' + QString::fromLatin1(format.suffix) : QString();
  QString path = folder + u'/' + name + suffix;
  for (int number = 2; isThere(path); ++number) path = u"%1/%2 %3%4"_s.arg(folder, name).arg(number).arg(suffix);
  return path;
}

// Why nothing can be written there; empty where it can.
QString problemOf(const QString& path, bool isFolder) {
  const QFileInfo file(path);
  const QFileInfo above(file.path());
  if (!above.isDir()) return u"There is no folder %1."_s.arg(pathForPeople(QUrl::fromLocalFile(above.filePath())));
  if (!above.isWritable())
    return u"You may not write to %1."_s.arg(pathForPeople(QUrl::fromLocalFile(above.filePath())));
  if (isThere(path) && file.isDir() != isFolder)
    return isFolder ? u"There is a file of that name, and a folder is needed."_s : u"That is a folder."_s;
  return {};
}

bool isEmptyFolder(const QString& path) {
  return QFileInfo(path).isDir() && QDir(path).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

}  // namespace

ExportDialog::ExportDialog(ExportDialogServices services, const QString& format, QWidget* parent)
    : ExchangeDialog(u"Export"_s, u"Export"_s, parent),
      m_services(std::move(services)),
      m_part(new ChoiceBox(this)),
      m_format(new ChoiceBox(this)),
      m_path(new QLineEdit(this)),
      m_replace(new TickBox({}, this)) {
  setObjectName(u"exportDialog"_s);
  addParts();
  addFormats(format);
  addPath();
  formatDidChange();
  m_part->setFocus();
}

void ExportDialog::addParts() {
  const auto counted = [this](const QString& what, qint64 count) {
    return count == 1 ? u"%1: 1 entry"_s.arg(what) : u"%1: %2 entries"_s.arg(what, locale().toString(count));
  };
  m_part->setObjectName(u"part"_s);
  m_part->addItem(counted(u"Everything"_s, m_services.entries), static_cast<int>(Part::All));
  if (m_services.found) {
    m_part->addItem(counted(u"What the search shows"_s, m_services.foundEntries), static_cast<int>(Part::Found));
    m_part->setCurrentIndex(1);
  }
  const auto selected = m_services.selected.size();
  if (selected == 1) m_part->addItem(u"The selected entry"_s, static_cast<int>(Part::Selected));
  if (selected > 1)
    m_part->addItem(u"The %1 selected entries"_s.arg(locale().toString(selected)), static_cast<int>(Part::Selected));
  form().addRow(u"What"_s, {m_part});
}

void ExportDialog::addFormats(const QString& format) {
  m_format->setObjectName(u"format"_s);
  for (const ExportFormat& one : exportFormats())
    m_format->addItem(QString::fromLatin1(one.title), QString::fromLatin1(one.name));
  m_format->setCurrentIndex(std::max(0, m_format->findData(format)));
  m_formatRow = form().addRow(u"Format"_s, {m_format});
  connect(m_format, &QComboBox::currentIndexChanged, this, &ExportDialog::formatDidChange);
}

void ExportDialog::addPath() {
  m_path->setObjectName(u"path"_s);
  m_path->setFont(textFont(13));
  m_path->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  auto* choose = new QPushButton(u"Choose…"_s, this);
  choose->setObjectName(u"choosePath"_s);
  choose->setFont(textFont(13));
  choose->setAutoDefault(false);
  m_pathRow = form().addRow(u"Where"_s, {m_path, choose});
  m_replace->setObjectName(u"replace"_s);
  m_replaceRow = form().addRow({}, {m_replace});
  setTabOrder(m_path, choose);
  setTabOrder(choose, m_replace);
  connect(choose, &QPushButton::clicked, this, &ExportDialog::choosePath);
  connect(m_path, &QLineEdit::textEdited, this, [this] { m_isSuggested = false; });
  connect(m_path, &QLineEdit::textChanged, this, &ExportDialog::pathDidChange);
  connect(m_replace, &QCheckBox::toggled, this, [this](bool isOn) { primary().setEnabled(isOn); });
}

ExportDialog::Part ExportDialog::part() const {
  return static_cast<Part>(m_part->currentData().toInt());
}

const ExportFormat& ExportDialog::format() const {
  return *exportFormatNamed(m_format->currentData().toString());
}

QString ExportDialog::path() const {
  return pathOfPeople(m_path->text().trimmed());
}

void ExportDialog::formatDidChange() {
  QString explanation = QString::fromLatin1(format().description);
  explanation[0] = explanation[0].toUpper();
  m_formatRow->setNote(explanation + u'.');
  suggestPath(m_path->text().isEmpty() ? folderToBeginIn() : QFileInfo(path()).path());
}

// What the person has typed keeps its name, and gets the suffix of the format.
void ExportDialog::suggestPath(const QString& folder) {
  if (m_isSuggested) {
    const QString name = QString(m_services.journalName).replace(u'/', u'-');
    m_path->setText(pathForPeople(QUrl::fromLocalFile(freePath(folder, name, format()))));
  } else {
    const QFileInfo file(path());
    const QString suffix = *format().suffix ? u'.' + QString::fromLatin1(format().suffix) : QString();
    m_path->setText(pathForPeople(QUrl::fromLocalFile(folder + u'/' + file.completeBaseName() + suffix)));
  }
  pathDidChange();
}

void ExportDialog::pathDidChange() {
  const QString at = path();
  const bool isNamed = !m_path->text().trimmed().isEmpty();
  const QString problem = isNamed ? problemOf(at, format().isFolder()) : u"A name is needed."_s;
  const bool isTaken = problem.isEmpty() && isThere(at) && !isEmptyFolder(at);
  m_pathRow->setError(problem);
  m_replace->setChecked(false);
  m_replace->setText(format().isFolder() ? u"Write into this folder, over files of the same names"_s
                                         : u"Replace the file that is there"_s);
  form().setRowVisible(*m_replaceRow, isTaken);
  primary().setEnabled(problem.isEmpty() && !isTaken);
}

void ExportDialog::choosePath() {
  const QString at = path();
  auto* panel = new QFileDialog(this, u"Export to"_s, QFileInfo(at).path());
  panel->setObjectName(u"choosePathPanel"_s);
  panel->setAttribute(Qt::WA_DeleteOnClose);
  panel->setWindowModality(Qt::WindowModal);
  if (format().isFolder()) {
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->setLabelText(QFileDialog::Accept, u"Choose"_s);
  } else {
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setDefaultSuffix(QString::fromLatin1(format().suffix));
    // This window asks.
    panel->setOption(QFileDialog::DontConfirmOverwrite);
    panel->selectFile(QFileInfo(at).fileName());
  }
  connect(panel, &QFileDialog::fileSelected, this, [this](const QString& chosen) {
    m_isSuggested = false;
    // The entries get a folder of their own in the one that is chosen.
    const bool isParent = format().isFolder() && !isEmptyFolder(chosen);
    const QString name = QString(m_services.journalName).replace(u'/', u'-');
    m_path->setText(pathForPeople(QUrl::fromLocalFile(isParent ? freePath(chosen, name, format()) : chosen)));
  });
  panel->open();
}

void ExportDialog::carryOut() {
  ExportOrder order{.journal = m_services.journal,
                    .options = {.question = {}},
                    .format = &format(),
                    .path = path(),
                    .isReplacing = m_replace->isChecked(),
                    .draw = m_services.pdf()};
  if (part() == Part::Found) order.options.question = *m_services.found;
  if (part() == Part::Selected) order.options.identifiers = m_services.selected;
  order.options.question.order = JournalQuestion::Order::OldestFirst;
  const auto outcome = std::make_shared<JournalExport::Result>();
  run([outcome, order](BackgroundWork::Monitor& monitor) { *outcome = runExport(order, monitor); },
      [this, outcome, at = order.path] { finished(*outcome, at); });
}

void ExportDialog::finished(const JournalExport::Result& result, const QString& at) {
  pathDidChange();
  if (result.isStopped) return setProblem(u"Cancelled; nothing was exported."_s);
  if (result.error) return setProblem(result.error->localizedDescription);
  accept();
  m_services.exported(at, result);
}

}  // namespace quillo
