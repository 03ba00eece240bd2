#include "preferences/setup/JournalStep.h"

#include "entry/session/OpenPanel.h"
#include "foundation/UserDirectories.h"
#include "preferences/controls/ChoiceCard.h"
#include "preferences/controls/FormRow.h"
#include "preferences/controls/Problem.h"
#include "qlcore/JournalChoice.h"
#include "qlcore/QLJournalPackageFile.h"

#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

// "Documents / Journal.quillojournal".
static QString placeInWords(const QUrl& location) {
  QString path = pathForPeople(location);
  if (path.startsWith(u"~/")) path.remove(0, 2);
  return path.startsWith(u'/') ? path : path.replace(u'/', u" / "_s);
}

JournalStep::JournalStep(FirstStart& start, OpenPanel& openPanel, QWidget* parent)
    : QWidget(parent),
      m_start(start),
      m_openPanel(openPanel),
      m_new(new ChoiceCard(u"A new journal"_s, {}, this)),
      m_existing(new ChoiceCard(u"A journal that I have already"_s, {}, this)),
      m_bringsIn(new ChoiceCard(u"Bring one in from another program"_s,
                                u"A new journal, then you choose the program\u2019s files"_s, this)),
      m_problem(makeFormLabel({}, u"error"_s, this)) {
  m_new->setObjectName(u"newJournal"_s);
  m_existing->setObjectName(u"existingJournal"_s);
  m_bringsIn->setObjectName(u"bringEntriesIn"_s);
  m_problem->setObjectName(u"journalProblem"_s);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(11);
  column->addWidget(m_new);
  column->addWidget(m_existing);
  column->addWidget(m_bringsIn);
  column->addWidget(m_problem);
  column->addStretch();
  for (const auto& [card, title, name] :
       {std::tuple(m_new, u"Change…"_s, u"changeFolder"_s), std::tuple(m_existing, u"Choose…"_s, u"chooseJournal"_s)}) {
    QPushButton* button = card->addButton(title);
    button->setObjectName(name);
    button->setAutoDefault(false);
  }
  connect(m_new->button(), &QPushButton::clicked, this, &JournalStep::chooseFolder);
  connect(m_existing->button(), &QPushButton::clicked, this, [this] { chooseJournal({}); });
  for (const ChoiceCard* card : {m_new, m_existing, m_bringsIn})
    connect(card, &QRadioButton::toggled, this, [this](bool isChosen) {
      if (isChosen) cardChosen();
    });
  show();
}

void JournalStep::cardChosen() {
  m_start.journal = m_existing->isChecked() ? FirstStart::Journal::Existing : FirstStart::Journal::New;
  m_start.bringsEntriesIn = m_bringsIn->isChecked();
  setProblem({});
}

void JournalStep::show() {
  const bool isNew = m_start.journal == FirstStart::Journal::New;
  ChoiceCard* const chosen = !isNew ? m_existing : m_start.bringsEntriesIn ? m_bringsIn : m_new;
  m_new->setExplanation(placeInWords(m_start.newJournal));
  m_existing->setExplanation(m_start.existingJournal.isEmpty() ? u"From a backup, or a synchronised folder"_s
                                                               : placeInWords(m_start.existingJournal));
  chosen->setChecked(true);
  setFocusProxy(chosen);
  setProblem({});
}

void JournalStep::setProblem(const QString& text) {
  showProblem(*m_problem, text);
}

void JournalStep::chooseFolder() {
  m_openPanel.beginSheet(u"Choose the Folder of the Journal"_s, UserDirectories::current().documents, window(),
                         [this](const QString& path) {
                           const QUrl chosen = QUrl::fromLocalFile(path);
                           // Whoever points at a journal means that one.
                           const bool isJournal = QLJournalPackageFile::openPackage(chosen, false, nullptr) != nullptr;
                           m_start.journal = isJournal ? FirstStart::Journal::Existing : FirstStart::Journal::New;
                           if (isJournal)
                             m_start.existingJournal = chosen;
                           else
                             m_start.newJournal =
                                 freeJournalLocation(QFileInfo(path).isDir() ? path : QFileInfo(path).absolutePath());
                           show();
                           setProblem(m_start.journalProblem());
                         });
}

void JournalStep::chooseJournal(std::function<void()> chosen) {
  m_openPanel.beginSheet(u"Choose Quillo Journal"_s, UserDirectories::current().documents, window(),
                         [this, chosen = std::move(chosen)](const QString& path) {
                           const QUrl before = m_start.existingJournal;
                           m_start.journal = FirstStart::Journal::Existing;
                           m_start.existingJournal = QUrl::fromLocalFile(path);
                           const QString problem = m_start.journalProblem();
                           if (!problem.isEmpty()) m_start.existingJournal = before;
                           show();
                           setProblem(problem);
                           if (problem.isEmpty() && chosen) chosen();
                         });
}

bool JournalStep::isReady(std::function<void()> chosen) {
  if (m_start.journal == FirstStart::Journal::Existing && m_start.existingJournal.isEmpty()) {
    chooseJournal(std::move(chosen));
    return false;
  }
  setProblem(m_start.journalProblem());
  return m_problem->text().isEmpty();
}

}  // namespace quillo
