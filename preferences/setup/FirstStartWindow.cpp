#include "preferences/setup/FirstStartWindow.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "preferences/controls/FormRow.h"
#include "preferences/controls/FormStyle.h"
#include "preferences/controls/Problem.h"
#include "preferences/controls/ReminderRuleEditor.h"
#include "preferences/setup/JournalStep.h"
#include "preferences/setup/KeyStep.h"
#include "preferences/setup/StepDots.h"
#include "preferences/setup/StepHeader.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points.
constexpr QSize windowSize{520, 540};
constexpr int side = 40;
constexpr int footerHeight = 56;
constexpr int labelWidth = 72;

struct StepText {
  QLatin1StringView title;
  QLatin1StringView about;
};
constexpr StepText stepTexts[] = {
    {"Where shall your journal live?"_L1,
     "A folder of plain files on this computer. Nothing leaves it unless you share the folder."_L1},
    {"When shall Quillo remind you?"_L1, "Writing now and then is easier when somebody asks."_L1},
    {"A key from anywhere"_L1, "It opens the window to write in, whatever program you are in."_L1},
};

}  // namespace

FirstStartWindow::FirstStartWindow(FirstStartWindowServices services)
    : m_services(std::move(services)),
      m_choice(m_services.proposed),
      m_header(new StepHeader(this)),
      m_stack(new QStackedWidget(this)),
      m_journal(new JournalStep(m_choice, m_services.openPanel)),
      m_reminders(new ReminderRuleEditor),
      m_key(new KeyStep(m_choice, m_services.shortcut, m_services.shortcutNote)),
      m_problem(makeFormLabel({}, u"error"_s, this)),
      m_dots(new StepDots(steps, this)),
      m_back(addButton(u"Back"_s, u"back"_s)),
      m_skip(addButton(u"Skip"_s, u"skip"_s)),
      m_continue(addButton({}, u"primary"_s)) {
  setWindowTitle(u"Welcome to Quillo"_s);
  setObjectName(u"firstStart"_s);
  build();
  m_reminders->setChoice(m_choice.reminders);
  connect(m_reminders, &ReminderRuleEditor::choiceChanged, this,
          [this](const ReminderChoice& choice) { m_choice.reminders = choice; });
  connect(m_back, &QPushButton::clicked, this, [this] { showStep(m_step - 1); });
  connect(m_skip, &QPushButton::clicked, this, [this] { goOn(/*skips=*/true); });
  connect(m_continue, &QPushButton::clicked, this, [this] { goOn(/*skips=*/false); });
  applyColors();
  showStep(Journal);
}

FirstStartWindow::~FirstStartWindow() = default;

QPushButton* FirstStartWindow::addButton(const QString& title, const QString& name) {
  auto* button = new QPushButton(title, this);
  button->setObjectName(name);
  button->setFont(textFont(13));
  button->setAutoDefault(false);
  return button;
}

void FirstStartWindow::build() {
  setFixedSize(windowSize);
  m_problem->setObjectName(u"problem"_s);
  m_problem->setContentsMargins(side, 0, side, 8);
  m_continue->setDefault(true);
  for (QWidget* page : std::initializer_list<QWidget*>{m_journal, m_reminders, m_key}) m_stack->addWidget(page);
  m_reminders->setLabelWidth(labelWidth);
  m_reminders->setFocusProxy(m_reminders->findChild<QWidget*>(u"remindersOn"_s));
  auto* body = new QVBoxLayout;
  body->setContentsMargins(side, 17, side, 8);
  body->addWidget(m_stack);

  auto* footer = new QWidget(this);
  footer->setFixedHeight(footerHeight);
  auto* row = new QHBoxLayout(footer);
  row->setContentsMargins(20, 0, 20, 0);
  row->setSpacing(10);
  row->addWidget(m_dots);
  row->addStretch();
  for (QPushButton* button : {m_back, m_skip, m_continue}) row->addWidget(button);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(m_header);
  column->addLayout(body, 1);
  column->addWidget(m_problem);
  column->addWidget(footer);
  // The fields before the buttons, and the one that goes on first among these.
  setTabOrder(m_continue, m_skip);
  setTabOrder(m_skip, m_back);
}

void FirstStartWindow::showWindow() {
  show();
  raise();
  activateWindow();
}

FirstStart FirstStartWindow::result() const {
  FirstStart result = m_choice;
  if (m_isSkipped[Journal]) result.journal = FirstStart::Journal::None;
  if (result.journal != FirstStart::Journal::New) result.bringsEntriesIn = false;
  if (m_isSkipped[Reminders]) result.reminders.isOn = false;
  if (m_isSkipped[Key]) {
    result.shortcut = PTKeyCombo::clearKeyCombo();
    result.agent = FirstStart::Agent::StartsNow;
  }
  return result;
}

void FirstStartWindow::showStep(int step) {
  m_step = step;
  m_header->setTexts(stepTexts[step].title, stepTexts[step].about);
  m_stack->setCurrentIndex(step);
  // Only the step that is shown takes room, so that what is said about it finds some.
  for (int i = 0; i < m_stack->count(); ++i)
    m_stack->widget(i)->setSizePolicy(QSizePolicy::Preferred,
                                      i == step ? QSizePolicy::Preferred : QSizePolicy::Ignored);
  m_dots->setStep(step);
  m_back->setVisible(step > Journal);
  m_continue->setText(step < Key ? u"Continue"_s : u"Start Quillo"_s);
  m_skip->setText(step < Key ? u"Skip"_s : u"Skip and Start"_s);
  setProblem({});
  if (step == Reminders) m_reminders->updateNextDates();
  if (step == Key) m_key->showSummary(result());
  setAccessibleDescription(m_header->title());
  // Enter goes on from each of them; in the last step the field would begin to record.
  (step == Key ? m_continue : m_stack->currentWidget())->setFocus();
}

void FirstStartWindow::goOn(bool skips) {
  if (m_isBusy) return;
  if (m_isWritten) return close(), void();
  if (!skips && m_step == Journal && !m_journal->isReady([this] { goOn(/*skips=*/false); })) return;
  if (!skips && m_step == Reminders && !m_reminders->choice().problem().isEmpty()) return;
  m_isSkipped[static_cast<size_t>(m_step)] = skips;
  if (m_step < Key)
    showStep(m_step + 1);
  else
    finish();
}

void FirstStartWindow::setBusy(bool isBusy) {
  m_isBusy = isBusy;
  for (QWidget* part : std::initializer_list<QWidget*>{m_stack, m_back, m_skip, m_continue}) part->setEnabled(!isBusy);
  if (isBusy) m_continue->setText(u"Starting…"_s);
}

void FirstStartWindow::setProblem(const QString& text) {
  m_problem->setVisible(!text.isEmpty());
  showProblem(*m_problem, text);
}

void FirstStartWindow::finish() {
  const FirstStart choice = result();
  setProblem({});
  setBusy(true);
  Error error;
  if (!m_services.apply(choice, &error)) {
    setBusy(false);
    showStep(Key);
    setProblem(error.localizedDescription);
    return;
  }
  m_isWritten = true;
  QString reason;
  const bool runs = m_services.startAgent(choice, &reason);
  setBusy(false);
  if (m_services.finished) m_services.finished(choice);
  if (runs) {
    close();
    return;
  }
  // All is saved: there is nothing to go back to.
  m_stack->setEnabled(false);
  m_back->hide();
  m_skip->hide();
  m_continue->setText(u"Close"_s);
  m_continue->setFocus();
  setProblem(u"All of it is saved, but the quill did not come: %1."_s.arg(reason));
}

bool FirstStartWindow::event(QEvent* event) {
  const bool isHandled = QDialog::event(event);
  // Notes and problems come and go; where they take more room than there is, the window makes some.
  if (event->type() == QEvent::LayoutRequest)
    setFixedHeight(std::max(windowSize.height(), layout()->minimumHeightForWidth(windowSize.width())));
  return isHandled;
}

void FirstStartWindow::reject() {
  // What is being written is not left half way.
  if (!m_isBusy) QDialog::reject();
}

void FirstStartWindow::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange) applyColors();
}

void FirstStartWindow::applyColors() {
  applyFormStyle(*this);
  update();
}

void FirstStartWindow::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.fillRect(rect(), colors.ground);
  painter.fillRect(0, height() - footerHeight - 1, width(), 1, colors.line);
}

}  // namespace quillo
