#include "preferences/controls/ReminderRuleEditor.h"

#include "controls/Fonts.h"
#include "preferences/controls/ChoiceBox.h"
#include "preferences/controls/DateField.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/Switch.h"
#include "preferences/controls/TickBox.h"
#include "preferences/controls/WheelGuard.h"
#include "reminders/ReminderInterval.h"

#include <QFrame>
#include <QLabel>
#include <QSpinBox>
#include <QTimeEdit>
#include <QVBoxLayout>

#include <array>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr int datesShown = 5;
constexpr int mostUnits = 9999;

struct UnitWord {
  CalendarUnit unit;
  QLatin1StringView word;
};

constexpr std::array units{
    UnitWord{CalendarUnit::Minute, "minute"_L1}, UnitWord{CalendarUnit::Hour, "hour"_L1},
    UnitWord{CalendarUnit::Day, "day"_L1},       UnitWord{CalendarUnit::Week, "week"_L1},
    UnitWord{CalendarUnit::Month, "month"_L1},   UnitWord{CalendarUnit::Year, "year"_L1},
};

bool isClock(const ReminderRule& rule) {
  return isClockStep(static_cast<quint64>(rule.unit));
}

constexpr quint64 readingMask =
    CalendarUnit::Year | CalendarUnit::Month | CalendarUnit::Day | CalendarUnit::Hour | CalendarUnit::Minute;

DateComponents reading(const ReminderRule& rule) {
  return rule.calendar.componentsFromDate(readingMask, rule.starting).value_or(DateComponents());
}

QTime timeOfReading(const DateComponents& parts) {
  return {static_cast<int>(parts.hour.value_or(0)), static_cast<int>(parts.minute.value_or(0))};
}

QTime timeOfMinute(int minute) {
  return QTime(0, 0).addSecs(minute * 60);
}

int minuteOf(QTime time) {
  return time.hour() * 60 + time.minute();
}

QTimeEdit* timeField(const QString& name, QWidget* parent) {
  auto* field = new QTimeEdit(parent);
  field->setFont(textFont(13));
  // A mirrored field would show the minutes first.
  field->setLayoutDirection(Qt::LeftToRight);
  field->setDisplayFormat(u"HH:mm"_s);
  field->setButtonSymbols(QAbstractSpinBox::NoButtons);
  new WheelGuard(*field);
  field->setAccessibleName(name);
  return field;
}

}  // namespace

ReminderRuleEditor::ReminderRuleEditor(QWidget* parent)
    : QWidget(parent),
      m_choice(ReminderChoice::suggested(Date::now())),
      m_form(new Form(this)),
      m_on(new Switch(this)),
      m_count(new QSpinBox(this)),
      m_unit(new ChoiceBox(this)),
      m_from(timeField(u"From"_s, this)),
      m_and(makeFormLabel(u"and"_s, u"note"_s, this)),
      m_until(timeField(u"Until"_s, this)),
      m_allDay(new TickBox(u"all day"_s, this)),
      m_starting(new DateField(this)),
      m_window(new TickBox(u"the entry window"_s, this)),
      m_notification(new TickBox(u"a notification"_s, this)),
      m_sound(new TickBox(u"a sound"_s, this)),
      m_words(makeFormLabel({}, {}, this)),
      m_next(makeFormLabel({}, u"note"_s, this)) {
  build();
  showChoice();
  const auto read = [this] { readFields(); };
  for (QCheckBox* box : std::initializer_list<QCheckBox*>{m_on, m_allDay, m_window, m_notification, m_sound})
    connect(box, &QCheckBox::toggled, this, read);
  connect(m_count, &QSpinBox::valueChanged, this, read);
  connect(m_unit, &QComboBox::currentIndexChanged, this, read);
  for (QTimeEdit* field : {m_from, m_until}) connect(field, &QTimeEdit::timeChanged, this, read);
  connect(m_starting, &QDateEdit::dateChanged, this, read);
}

void ReminderRuleEditor::build() {
  m_on->setObjectName(u"remindersOn"_s);
  m_count->setObjectName(u"reminderCount"_s);
  m_unit->setObjectName(u"reminderUnit"_s);
  m_from->setObjectName(u"reminderFrom"_s);
  m_until->setObjectName(u"reminderUntil"_s);
  m_allDay->setObjectName(u"reminderAllDay"_s);
  m_starting->setObjectName(u"reminderStarting"_s);
  m_window->setObjectName(u"reminderWindow"_s);
  m_notification->setObjectName(u"reminderNotification"_s);
  m_sound->setObjectName(u"reminderSound"_s);
  m_words->setObjectName(u"reminderWords"_s);
  m_next->setObjectName(u"reminderDates"_s);
  m_count->setFont(textFont(13));
  m_count->setRange(1, mostUnits);
  m_count->setButtonSymbols(QAbstractSpinBox::NoButtons);
  new WheelGuard(*m_count);
  m_count->setFixedWidth(58);
  m_unit->setAccessibleName(u"Unit"_s);
  for (const UnitWord& unit : units) m_unit->addItem(unit.word);
  m_and->setWordWrap(false);

  m_form->addRow(u"Remind me"_s, {m_on});
  m_everyRow = m_form->addRow(u"Every"_s, {m_count, m_unit});
  m_timeRow = m_form->addRow(u"Between"_s, {m_from, m_and, m_until, m_allDay});
  m_startingRow = m_form->addRow(u"Starting"_s, {m_starting});
  m_wayRow = m_form->addRow(u"By"_s, {m_window, m_notification, m_sound});

  auto* summary = new QFrame(this);
  summary->setObjectName(u"summary"_s);
  auto* lines = new QVBoxLayout(summary);
  lines->setContentsMargins(15, 11, 15, 11);
  lines->setSpacing(5);
  m_words->setFont(textFont(13, QFont::DemiBold));
  lines->addWidget(m_words);
  lines->addWidget(m_next);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(16);
  column->addWidget(m_form);
  column->addWidget(summary);
  summary->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
  column->addStretch();
}

void ReminderRuleEditor::setChoice(const ReminderChoice& choice) {
  if (choice == m_choice) return;
  m_choice = choice;
  showChoice();
}

void ReminderRuleEditor::setLabelWidth(int width) {
  m_form->setLabelWidth(width);
}

void ReminderRuleEditor::setError(const QString& text) {
  m_wayRow->setError(text);
}

void ReminderRuleEditor::showUnits() {
  const bool isOne = m_choice.rule.count == 1;
  for (size_t i = 0; i < units.size(); ++i)
    m_unit->setItemText(static_cast<int>(i), units[i].word + (isOne ? ""_L1 : "s"_L1));
}

void ReminderRuleEditor::showChoice() {
  m_isShowing = true;
  const ReminderRule& rule = m_choice.rule;
  const DateComponents parts = reading(rule);
  m_on->setChecked(m_choice.isOn);
  m_count->setValue(static_cast<int>(std::min<quint64>(rule.count, mostUnits)));
  for (size_t i = 0; i < units.size(); ++i)
    if (units[i].unit == rule.unit) m_unit->setCurrentIndex(static_cast<int>(i));
  const QTime from = rule.window ? timeOfMinute(rule.window->from) : timeOfReading(parts);
  if (m_from->time() != from) m_from->setTime(from);
  if (rule.window && m_until->time() != timeOfMinute(rule.window->until))
    m_until->setTime(timeOfMinute(rule.window->until));
  m_allDay->setChecked(isClock(rule) && !rule.window);
  const QDate day(static_cast<int>(parts.year.value_or(1)), static_cast<int>(parts.month.value_or(1)),
                  static_cast<int>(parts.day.value_or(1)));
  if (m_starting->date() != day) m_starting->setDate(day);
  m_window->setChecked(m_choice.opensWindow);
  m_notification->setChecked(m_choice.notifies);
  m_sound->setChecked(m_choice.playsSound);
  m_isShowing = false;
  updateSummary();
}

void ReminderRuleEditor::readFields() {
  if (m_isShowing) return;
  const ReminderChoice before = m_choice;
  ReminderRule& rule = m_choice.rule;
  const bool wasClock = isClock(rule);
  m_choice.isOn = m_on->isChecked();
  rule.count = static_cast<quint64>(m_count->value());
  rule.unit = units[static_cast<size_t>(std::max(0, m_unit->currentIndex()))].unit;
  // What is first seen as hours is not meant for the night.
  if (isClock(rule) && !wasClock) {
    m_isShowing = true;
    m_from->setTime({9, 0});
    m_until->setTime({17, 0});
    m_allDay->setChecked(false);
    m_isShowing = false;
  }
  DateComponents parts;
  const QDate day = m_starting->date();
  parts.year = day.year();
  parts.month = day.month();
  parts.day = day.day();
  parts.hour = m_from->time().hour();
  parts.minute = m_from->time().minute();
  rule.starting = rule.calendar.dateFromComponents(parts).value_or(rule.starting);
  rule.window = windowOfFields();
  m_choice.opensWindow = m_window->isChecked();
  m_choice.notifies = m_notification->isChecked();
  m_choice.playsSound = m_sound->isChecked();
  // A field may tell of what it has shown already.
  if (m_choice == before) return;
  updateSummary();
  if (m_choice.problem().isEmpty()) Q_EMIT choiceChanged(m_choice);
}

std::optional<DailyWindow> ReminderRuleEditor::windowOfFields() const {
  if (!isClock(m_choice.rule) || m_allDay->isChecked()) return std::nullopt;
  // One over midnight, which another program has set, stays until one of its times is changed.
  const auto& before = m_choice.rule.window;
  if (before && m_from->time() == timeOfMinute(before->from) && m_until->time() == timeOfMinute(before->until))
    return before;
  return DailyWindow{minuteOf(m_from->time()), minuteOf(m_until->time())};
}

void ReminderRuleEditor::updateSummary() {
  const ReminderRule& rule = m_choice.rule;
  showUnits();
  for (QWidget* row : std::initializer_list<QWidget*>{m_everyRow, m_timeRow, m_startingRow, m_wayRow})
    row->setEnabled(m_choice.isOn);
  const bool hasWindow = isClock(rule) && rule.window;
  m_form->setRowLabel(*m_timeRow, hasWindow ? u"Between"_s : isClock(rule) ? u"From"_s : u"At"_s);
  m_and->setVisible(hasWindow);
  m_until->setVisible(hasWindow);
  m_allDay->setVisible(isClock(rule));
  const bool isElsewhere = !(rule.calendar == Calendar::currentCalendar());
  QStringList notes;
  if (isElsewhere) notes << u"Chosen in the time zone %1."_s.arg(rule.calendar.timeZone().name());
  if (hasWindow && rule.window->isOverMidnight())
    notes << u"Over midnight there is one reminder a day, at the first of the two times."_s;
  m_timeRow->setNote(notes.join(u' '));
  m_timeRow->setError(m_choice.problem());
  const bool isUnnoticed = m_choice.isOn && !m_choice.opensWindow && !m_choice.notifies;
  m_wayRow->setNote(isUnnoticed ? u"Without the window or a notification a reminder passes unnoticed; a sound only "
                                  "goes with one of them."_s
                                : QString());
  updateNextDates();
}

void ReminderRuleEditor::updateNextDates() {
  if (!m_choice.isOn) {
    m_words->setText(u"No reminders."_s);
    m_next->setText(u"Switch them on to be asked to write at the times of your choice."_s);
    return;
  }
  const QList<Date> dates = m_choice.next(Date::now(), datesShown);
  m_words->setText(m_choice.inWords());
  m_next->setText(dates.isEmpty() ? u"There is no next date."_s
                                  : u"Next: "_s + datesInWords(dates, QDate::currentDate()));
}

}  // namespace quillo
