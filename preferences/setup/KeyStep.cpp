#include "preferences/setup/KeyStep.h"

#include "controls/Fonts.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/Switch.h"

#include <QFrame>
#include <QLabel>
#include <QVBoxLayout>

#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

KeyStep::KeyStep(FirstStart& start, ShortcutRecorderServices shortcut, const QString& note, QWidget* parent)
    : QWidget(parent),
      m_start(start),
      m_recorder(new ShortcutRecorder(std::move(shortcut), this)),
      m_login(new Switch(this)),
      m_journal(makeFormLabel({}, {}, this)),
      m_reminders(makeFormLabel({}, u"note"_s, this)) {
  m_login->setObjectName(u"startsAtLogin"_s);
  m_journal->setObjectName(u"summaryJournal"_s);
  m_reminders->setObjectName(u"summaryReminders"_s);
  auto* form = new Form(this);
  form->setLabelWidth(72);
  FormRow* key = form->addRow(u"Key"_s, {m_recorder});
  key->setNote(note);
  FormRow* login = form->addRow(u"At login"_s, {m_login});
  login->setNote(u"The quill comes into the tray by itself."_s);
  connect(m_recorder, &ShortcutRecorder::said, key, [key, note](const QString& text, bool isProblem) {
    key->setError(isProblem ? text : QString());
    key->setNote(isProblem ? QString() : text.isEmpty() ? note : text);
  });
  connect(m_recorder, &ShortcutRecorder::comboChosen, this,
          [this](const PTKeyCombo::Pointer& combo) { m_start.shortcut = combo; });
  m_login->setChecked(m_start.agent == FirstStart::Agent::StartsAtLogin);
  connect(m_login, &QCheckBox::toggled, this, [this](bool isOn) {
    m_start.agent = isOn ? FirstStart::Agent::StartsAtLogin : FirstStart::Agent::StartsNow;
  });

  auto* summary = new QFrame(this);
  summary->setObjectName(u"summary"_s);
  auto* lines = new QVBoxLayout(summary);
  lines->setContentsMargins(15, 11, 15, 11);
  lines->setSpacing(5);
  m_journal->setFont(textFont(13, QFont::DemiBold));
  lines->addWidget(m_journal);
  lines->addWidget(m_reminders);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(16);
  column->addWidget(form);
  column->addWidget(summary);
  column->addStretch();
  setFocusProxy(m_recorder);
  m_recorder->setCombo(m_start.shortcut);
}

void KeyStep::showSummary(const FirstStart& result) {
  const QString journal = pathForPeople(result.chosenJournal());
  m_journal->setText(result.journal == FirstStart::Journal::None  ? u"No journal yet."_s
                     : result.journal == FirstStart::Journal::New ? u"A new journal at %1."_s.arg(journal)
                                                                  : u"The journal at %1."_s.arg(journal));
  m_reminders->setText(result.reminders.isOn ? u"Reminders: "_s + result.reminders.inWords().toLower()
                                             : u"No reminders."_s);
}

}  // namespace quillo
