#include "preferences/pages/AdvancedPage.h"

#include "config/Keys.h"
#include "controls/Fonts.h"
#include "platform/Workspace.h"
#include "preferences/controls/Form.h"
#include "preferences/model/SettingsTableModel.h"
#include "preferences/pages/PreferencesServices.h"

#include <QHeaderView>
#include <QPushButton>
#include <QShortcut>
#include <QTableView>
#include <QUrl>
#include <QVBoxLayout>

namespace quillo {

using namespace Qt::StringLiterals;

AdvancedPage::AdvancedPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent)
    : PreferencePage(u"Advanced"_s, store, parent), m_services(services), m_table(new QTableView(this)) {
  addSwitch(u"Keep it on the screen"_s, Key::keepEntryWindowOnScreen)
      ->setNote(u"The quill's window, at an icon near the screen's edge."_s);
  addSwitch(u"Escape closes it"_s, Key::escapeClosesEntryWindow)->setNote(u"What was written is saved."_s);
  addLog();
  addTable();
}

void AdvancedPage::addLog() {
  QPushButton* open = makeButton(u"Show the Log"_s, u"openLog"_s);
  FormRow* row = addSwitch(u"Log everything"_s, Key::verboseLogging);
  row->addField(open);
  row->setNote(u"Nothing of what you write. In %1."_s.arg(pathInWords(m_services.logFolder)));
  connect(open, &QPushButton::clicked, this, [this, row] {
    const bool isShown = m_services.workspace.openURL(QUrl::fromLocalFile(m_services.logFolder));
    row->setError(isShown ? QString() : u"No installed program shows folders."_s);
  });
}

void AdvancedPage::addTable() {
  auto* model = new SettingsTableModel(store(), this);
  m_table->setObjectName(u"settings"_s);
  m_table->setAccessibleName(u"Every setting"_s);
  m_table->setModel(model);
  m_table->setFont(textFont(12));
  m_table->horizontalHeader()->setFont(textFont(12));
  m_table->horizontalHeader()->setHighlightSections(false);
  m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  m_table->horizontalHeader()->setStretchLastSection(true);
  m_table->verticalHeader()->hide();
  m_table->verticalHeader()->setDefaultSectionSize(25);
  m_table->setShowGrid(false);
  m_table->setTabKeyNavigation(false);
  m_table->setSelectionMode(QAbstractItemView::SingleSelection);
  m_table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                           QAbstractItemView::AnyKeyPressed);
  m_table->setColumnWidth(SettingsTableModel::NameColumn, 178);
  m_table->setColumnWidth(SettingsTableModel::ValueColumn, 96);
  m_table->setMinimumHeight(110);
  // What is left of the window is enough.
  m_table->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
  auto* row = new FormRow({}, this);
  row->setObjectName(u"settingsNote"_s);
  row->setNote(u"A value is typed as “quilloctl settings set” takes it; Delete goes back to the default."_s);
  column().setSpacing(12);
  column().addWidget(m_table, 1);
  column().addWidget(row);
  connect(model, &SettingsTableModel::edited, row, &FormRow::setError);
  auto* key = new QShortcut(QKeySequence(Qt::Key_Delete), m_table, nullptr, nullptr, Qt::WidgetShortcut);
  connect(key, &QShortcut::activated, this, &AdvancedPage::resetCurrent);
}

void AdvancedPage::resetCurrent() {
  const QModelIndex current = m_table->currentIndex();
  if (!current.isValid()) return;
  QAbstractItemModel* model = m_table->model();
  const QModelIndex value = current.siblingAtColumn(SettingsTableModel::ValueColumn);
  if (model->flags(value) & Qt::ItemIsEditable) model->setData(value, QString(), Qt::EditRole);
}

}  // namespace quillo
