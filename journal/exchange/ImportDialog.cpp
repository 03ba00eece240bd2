#include "journal/exchange/ImportDialog.h"

#include "controls/Fonts.h"
#include "entry/session/OpenPanel.h"
#include "foundation/UserDirectories.h"
#include "preferences/controls/ChoiceBox.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/TickBox.h"

#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// In points.
constexpr int mostProblemsSeen = 6;

QString entriesInWords(qint64 count, const QLocale& locale) {
  return count == 1 ? u"1 entry"_s : u"%1 entries"_s.arg(locale.toString(count));
}

// "12 entries from 1 March 2019 to 30 June 2024.\n10 are new, 2 are there already."
QString summaryOf(const ImportPreview& preview, const QLocale& locale) {
  const JournalImport::Counts& counts = preview.counts;
  if (counts.entries() == 0) return u"There is no entry in it that can be read."_s;
  QString text = entriesInWords(counts.entries(), locale);
  if (counts.first && counts.last) {
    const auto day = [&](const Date& date) {
      return locale.toString(date.toDateTime().toLocalTime().date(), u"d MMMM yyyy"_s);
    };
    const QString first = day(*counts.first);
    const QString last = day(*counts.last);
    text += first == last ? u" of %1"_s.arg(first) : u" from %1 to %2"_s.arg(first, last);
  }
  QStringList parts;
  const auto add = [&](qint64 count, const QString& one, const QString& many) {
    if (count > 0) parts << (count == 1 ? one : many.arg(locale.toString(count)));
  };
  const qint64 differing = counts.differing + counts.replaced;
  if (counts.same == 0 && differing == 0) return text + u", all of them new."_s;
  add(counts.added, u"1 is new"_s, u"%1 are new"_s);
  add(counts.same, u"1 is there already"_s, u"%1 are there already"_s);
  add(differing, u"1 is there with other words or details"_s, u"%1 are there with other words or details"_s);
  return text + u":\n"_s + parts.join(u", "_s) + u'.';
}

}  // namespace

ImportDialog::ImportDialog(ImportDialogServices services, QWidget* parent)
    : ExchangeDialog(u"Import"_s, u"Import"_s, parent),
      m_services(std::move(services)),
      m_source(new QLineEdit(this)),
      m_format(new ChoiceBox(this)),
      m_summary(makeFormLabel({}, {}, this)),
      m_problems(new QListWidget(this)),
      m_goesOn(new TickBox({}, this)),
      m_replaces(new TickBox({}, this)),
      m_pause(new QTimer(this)) {
  setObjectName(u"importDialog"_s);
  addSource();
  addPreview();
  updateButton();
}

void ImportDialog::addSource() {
  m_source->setObjectName(u"source"_s);
  m_source->setFont(textFont(13));
  m_source->setPlaceholderText(u"A file or a folder"_s);
  m_source->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  auto* chooseButton = new QPushButton(u"Choose…"_s, this);
  chooseButton->setObjectName(u"chooseSource"_s);
  chooseButton->setFont(textFont(13));
  chooseButton->setAutoDefault(false);
  m_format->setObjectName(u"format"_s);
  for (const ImportFormat& format : importFormats())
    m_format->addItem(QString::fromLatin1(format.title), QString::fromLatin1(format.name));
  m_sourceRow = form().addRow(u"From"_s, {m_source, chooseButton});
  m_formatRow = form().addRow(u"Format"_s, {m_format});
  m_pause->setSingleShot(true);
  m_pause->setInterval(400ms);
  connect(m_pause, &QTimer::timeout, this, &ImportDialog::look);
  connect(chooseButton, &QPushButton::clicked, this, &ImportDialog::choose);
  connect(m_source, &QLineEdit::textEdited, this, [this] {
    m_isFormatChosen = false;
    m_preview.reset();
    updateButton();
    m_pause->start();
  });
  connect(m_format, &QComboBox::activated, this, [this] {
    m_isFormatChosen = true;
    look();
  });
  setTabOrder(m_source, chooseButton);
  setTabOrder(chooseButton, m_format);
  // Whoever opens it has nothing else to do first.
  chooseButton->setFocus();
}

void ImportDialog::addPreview() {
  m_summary->setObjectName(u"summaryText"_s);
  m_problems->setObjectName(u"problems"_s);
  m_problems->setFont(textFont(12));
  m_problems->setTextElideMode(Qt::ElideMiddle);
  m_problems->setAccessibleName(u"What cannot be read"_s);
  m_goesOn->setObjectName(u"goesOn"_s);
  m_replaces->setObjectName(u"replaces"_s);
  for (QWidget* part : std::initializer_list<QWidget*>{m_summary, m_problems, m_goesOn, m_replaces}) {
    column().addWidget(part);
    part->hide();
  }
  connect(m_goesOn, &QCheckBox::toggled, this, &ImportDialog::updateButton);
  connect(m_replaces, &QCheckBox::toggled, this, &ImportDialog::updateButton);
}

void ImportDialog::choose() {
  m_services.openPanel.beginSheet(u"Choose a File or Folder to Import"_s, UserDirectories::current().documents, this,
                                  [this](const QString& path) { setSource(path); });
}

void ImportDialog::setSource(const QString& path) {
  m_source->setText(pathForPeople(QUrl::fromLocalFile(path)));
  m_isFormatChosen = false;
  look();
}

ImportOrder ImportDialog::order() const {
  return {.journal = m_services.journal,
          .format = importFormatNamed(m_format->currentData().toString()),
          .path = pathOfPeople(m_source->text().trimmed()),
          .makesTagsOfHashtags = m_services.makesTagsOfHashtags,
          .isReplacing = m_replaces->isChecked()};
}

// What the person has chosen stays, until it is another source.
void ImportDialog::guessFormat() {
  const ImportFormat* guess = m_isFormatChosen ? nullptr : guessImportFormat(order().path);
  if (guess) m_format->setCurrentIndex(m_format->findData(QString::fromLatin1(guess->name)));
}

void ImportDialog::look() {
  m_pause->stop();
  m_preview.reset();
  for (QWidget* part : std::initializer_list<QWidget*>{m_summary, m_problems, m_goesOn, m_replaces}) part->hide();
  m_replaces->setChecked(false);
  m_goesOn->setChecked(false);
  guessFormat();
  const ImportOrder looked = order();
  const bool isNamed = !m_source->text().trimmed().isEmpty();
  const bool isThere = isNamed && QFileInfo::exists(looked.path);
  m_sourceRow->setError(isNamed && !isThere ? u"There is no file or folder of that name."_s : QString());
  updateButton();
  if (!isThere) return;
  const auto preview = std::make_shared<ImportPreview>();
  run([preview, looked](BackgroundWork::Monitor& monitor) { *preview = previewImport(looked, monitor); },
      [this, preview] { showPreview(*preview); });
}

void ImportDialog::showPreview(const ImportPreview& preview) {
  updateButton();
  if (preview.isStopped) return setProblem(u"It was not read to its end."_s);
  if (preview.error) return setProblem(preview.error->localizedDescription);
  m_preview = preview;
  const JournalImport::Counts& counts = preview.counts;
  m_summary->setText(summaryOf(preview, locale()));
  m_summary->show();
  m_problems->clear();
  m_problems->addItems(preview.problems);
  for (int row = 0; row < m_problems->count(); ++row) m_problems->item(row)->setToolTip(preview.problems[row]);
  if (counts.problems > preview.problems.size()) m_problems->addItem(u"and more of that kind"_s);
  const int rows = std::min(m_problems->count(), mostProblemsSeen);
  m_problems->setFixedHeight(rows * std::max(m_problems->sizeHintForRow(0), 18) + 12);
  m_problems->setVisible(counts.problems > 0);
  m_goesOn->setText(counts.problems == 1 ? u"Leave out the 1 that cannot be read, and import the others"_s
                                         : u"Leave out the %1 that cannot be read, and import the others"_s.arg(
                                               locale().toString(counts.problems)));
  m_goesOn->setVisible(counts.problems > 0 && counts.entries() > 0);
  m_replaces->setText(counts.differing == 1 ? u"Replace the one that differs"_s
                                            : u"Replace the %1 that differ"_s.arg(locale().toString(counts.differing)));
  m_replaces->setVisible(counts.differing > 0);
  updateButton();
  QWidget* const refused = counts.problems > 0 && counts.entries() > 0 ? static_cast<QWidget*>(m_goesOn) : &cancel();
  (primary().isEnabled() ? &primary() : refused)->setFocus();
}

void ImportDialog::updateButton() {
  qint64 coming = 0;
  if (m_preview) coming = m_preview->counts.added + (m_replaces->isChecked() ? m_preview->counts.differing : 0);
  const bool isRefused = m_preview && m_preview->counts.problems > 0 && !m_goesOn->isChecked();
  primary().setText(coming > 0 ? u"Import %1"_s.arg(entriesInWords(coming, locale())) : u"Import"_s);
  primary().setEnabled(coming > 0 && !isRefused && !isAtWork());
}

void ImportDialog::carryOut() {
  const auto outcome = std::make_shared<ImportOutcome>();
  run([outcome, order = order(), total = m_preview->counts.entries()](
          BackgroundWork::Monitor& monitor) { *outcome = runImport(order, total, monitor); },
      [this, outcome] { finished(*outcome); });
}

void ImportDialog::finished(const ImportOutcome& outcome) {
  updateButton();
  if (outcome.error)
    return setProblem(outcome.isStopped ? u"Cancelled; nothing was imported."_s
                                        : u"Nothing was imported: %1"_s.arg(outcome.error->localizedDescription));
  accept();
  m_services.imported(outcome);
}

}  // namespace quillo
