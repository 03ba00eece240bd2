#include "journal/exchange/ExchangeDialog.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/FormStyle.h"
#include "preferences/controls/Problem.h"

#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points.
constexpr int dialogWidth = 540;
constexpr int side = 24;
constexpr int labelWidth = 64;
constexpr int steps = 1000;

QPushButton* makeButton(const QString& title, const QString& name, QWidget* parent) {
  auto* button = new QPushButton(title, parent);
  button->setObjectName(name);
  button->setFont(textFont(13));
  button->setAutoDefault(false);
  return button;
}

}  // namespace

ExchangeDialog::ExchangeDialog(const QString& title, const QString& primary, QWidget* parent)
    : QDialog(parent),
      m_fields(new QWidget(this)),
      m_body(new QVBoxLayout(m_fields)),
      m_form(new Form(m_fields)),
      m_problem(makeFormLabel({}, u"error"_s, this)),
      m_state(makeFormLabel({}, u"note"_s, this)),
      m_progress(new QProgressBar(this)),
      m_footer(new QWidget(this)),
      m_cancel(makeButton(u"Cancel"_s, u"cancel"_s, m_footer)),
      m_primary(makeButton(primary, u"primary"_s, m_footer)) {
  setWindowTitle(title);
  setWindowModality(Qt::WindowModal);
  build();
  makeWork();
  connect(m_cancel, &QPushButton::clicked, this, &ExchangeDialog::reject);
  connect(m_primary, &QPushButton::clicked, this, [this] {
    if (!isAtWork()) carryOut();
  });
  applyFormStyle(*this);
}

ExchangeDialog::~ExchangeDialog() = default;

void ExchangeDialog::build() {
  m_form->setLabelWidth(labelWidth);
  m_problem->setObjectName(u"problem"_s);
  m_state->setObjectName(u"state"_s);
  m_progress->setTextVisible(false);
  m_primary->setDefault(true);
  m_body->setContentsMargins(0, 0, 0, 0);
  m_body->setSpacing(10);
  m_body->addWidget(m_form);

  auto* row = new QHBoxLayout(m_footer);
  row->setContentsMargins(side, 12, side, 12);
  row->setSpacing(10);
  row->addStretch();
  row->addWidget(m_cancel);
  row->addWidget(m_primary);

  auto* middle = new QVBoxLayout;
  middle->setContentsMargins(side, 20, side, 16);
  middle->setSpacing(8);
  middle->addWidget(m_fields, 1);
  for (QWidget* part : std::initializer_list<QWidget*>{m_problem, m_state, m_progress}) {
    middle->addWidget(part);
    part->hide();
  }
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addLayout(middle, 1);
  column->addWidget(m_footer);
  setFixedWidth(dialogWidth);
}

void ExchangeDialog::makeWork() {
  m_work = std::make_unique<BackgroundWork>();
  connect(m_work.get(), &BackgroundWork::progressed, this, &ExchangeDialog::showProgress);
}

void ExchangeDialog::run(std::function<void(BackgroundWork::Monitor&)> work, std::function<void()> done) {
  setProblem({});
  showProgress({}, 0, 0);
  m_work->start(std::move(work), [this, done = std::move(done)] {
    setAtWork(false);
    done();
  });
  setAtWork(true);
}

void ExchangeDialog::abandonWork() {
  makeWork();
  setAtWork(false);
}

void ExchangeDialog::setAtWork(bool isAtWork) {
  // The keyboard goes to what can be done meanwhile, and not to whatever comes after a field that is switched off.
  if (isAtWork) m_cancel->setFocus();
  m_fields->setEnabled(!isAtWork);
  m_primary->setEnabled(!isAtWork);
  m_cancel->setEnabled(true);
  m_state->setVisible(isAtWork);
  m_progress->setVisible(isAtWork);
}

void ExchangeDialog::showProgress(const QString& what, qint64 done, qint64 total) {
  const QString counted = total > 0 ? u"%1: %2 of %3"_s.arg(what, locale().toString(done), locale().toString(total))
                                    : u"%1: %2"_s.arg(what, locale().toString(done));
  m_state->setText(done > 0 ? counted : what);
  m_progress->setRange(0, total > 0 ? steps : 0);
  if (total > 0) m_progress->setValue(static_cast<int>(std::clamp<qint64>(done * steps / total, 0, steps)));
}

void ExchangeDialog::setProblem(const QString& text) {
  m_problem->setVisible(!text.isEmpty());
  showProblem(*m_problem, text);
}

void ExchangeDialog::reject() {
  if (!isAtWork()) return QDialog::reject();
  m_work->stop();
  m_cancel->setEnabled(false);
  m_state->setText(u"Cancelling…"_s);
}

bool ExchangeDialog::event(QEvent* event) {
  const bool isHandled = QDialog::event(event);
  if (event->type() == QEvent::LayoutRequest) fitHeight();
  return isHandled;
}

// Notes come and go; the window has the height that they take. What is in it is told of what has changed only in turns
// of the event loop, so all of it is asked anew.
void ExchangeDialog::fitHeight() {
  for (QWidget* part : m_fields->findChildren<QWidget*>())
    if (part->layout()) part->layout()->invalidate();
  layout()->invalidate();
  setFixedHeight(layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(dialogWidth)
                                               : layout()->totalSizeHint().height());
  layout()->activate();
}

void ExchangeDialog::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange)
    applyFormStyle(*this);
}

void ExchangeDialog::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.fillRect(rect(), colors.ground);
  painter.fillRect(0, m_footer->y() - 1, width(), 1, colors.line);
}

}  // namespace quillo
