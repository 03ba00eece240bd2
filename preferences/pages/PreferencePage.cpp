#include "preferences/pages/PreferencePage.h"

#include "controls/Fonts.h"
#include "foundation/UserDirectories.h"
#include "preferences/controls/Form.h"
#include "preferences/controls/Switch.h"
#include "preferences/model/PreferenceStore.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

PreferencePage::PreferencePage(const QString& title, PreferenceStore& store, QWidget* parent)
    : QWidget(parent), m_store(store), m_column(new QVBoxLayout(this)), m_form(new Form(this)) {
  auto* heading = makeFormLabel(title, {}, this);
  heading->setFont(textFont(18, QFont::DemiBold));
  m_column->setContentsMargins(30, 26, 30, 24);
  m_column->setSpacing(18);
  m_column->addWidget(heading);
  m_column->addWidget(m_form);
  setAccessibleName(title);
  // A page that is not shown is brought up to date when it is.
  connect(&store, &PreferenceStore::changed, this, [this] {
    if (isVisible()) showValues();
  });
}

void PreferencePage::showEvent(QShowEvent* event) {
  showValues();
  QWidget::showEvent(event);
}

QString PreferencePage::pathInWords(const QString& path) {
  const QString home = UserDirectories::current().home + u'/';
  return path.startsWith(home) ? u"~/"_s + path.mid(home.size()) : path;
}

QPushButton* PreferencePage::makeButton(const QString& title, const QString& name) {
  auto* button = new QPushButton(title, this);
  button->setObjectName(name);
  button->setFont(textFont(13));
  button->setAutoDefault(false);
  return button;
}

namespace {

// Ends with the layouts, which hold each widget once.
void collectFields(QLayout& layout, QList<QWidget*>& fields) {
  for (int i = 0; i < layout.count(); ++i) {
    QLayoutItem* item = layout.itemAt(i);
    if (QLayout* inner = item->layout()) collectFields(*inner, fields);
    QWidget* widget = item->widget();
    if (!widget) continue;
    if (widget->focusPolicy() & Qt::TabFocus) fields << widget;
    if (widget->layout()) collectFields(*widget->layout(), fields);
  }
}

}  // namespace

void PreferencePage::orderTabs() {
  QList<QWidget*> fields;
  collectFields(*layout(), fields);
  for (qsizetype i = 1; i < fields.size(); ++i) setTabOrder(fields[i - 1], fields[i]);
}

void PreferencePage::showValues() {
  for (const auto& show : m_showers) show();
}

FormRow* PreferencePage::addSwitch(const QString& label, const QString& key) {
  auto* field = new Switch(this);
  field->setObjectName(key);
  FormRow* row = form().addRow(label, {field});
  connect(field, &QCheckBox::toggled, this, [this, row, key](bool isOn) {
    QString reason;
    store().set(key, PropertyListValue(isOn), &reason);
    row->setError(reason);
  });
  addShower([this, field, key] {
    const QSignalBlocker silence(field);
    field->setChecked(store().isOn(key));
  });
  return row;
}

FormRow* PreferencePage::addText(const QString& label, const QString& key,
                                 std::function<QString(const QString& text)> problem) {
  auto* field = new QLineEdit(this);
  field->setObjectName(key);
  field->setFont(textFont(13));
  field->setClearButtonEnabled(false);
  FormRow* row = form().addRow(label, {field});
  connect(field, &QLineEdit::editingFinished, this, [this, field, row, key, problem = std::move(problem)] {
    const QString text = field->text().trimmed();
    const auto stored = store().storedValue(key);
    if (text == (stored && stored->isString() ? stored->string() : QString())) return row->setError({});
    QString reason = text.isEmpty() ? QString() : problem(text);
    if (reason.isEmpty())
      store().set(key, text.isEmpty() ? std::nullopt : std::optional(PropertyListValue(text)), &reason);
    field->setModified(!reason.isEmpty());
    row->setError(reason);
  });
  addShower([this, field, key] {
    const auto stored = store().storedValue(key);
    const QString text = stored && stored->isString() ? stored->string() : QString();
    // What is being typed is not taken away.
    if (!field->isModified() && field->text() != text) field->setText(text);
  });
  return row;
}

}  // namespace quillo
