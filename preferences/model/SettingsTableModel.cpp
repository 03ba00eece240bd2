#include "preferences/model/SettingsTableModel.h"

#include "config/Keys.h"
#include "config/SettingText.h"
#include "config/Settings.h"
#include "preferences/model/PreferenceStore.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// As much of a value as a cell and its editor can show.
constexpr qsizetype longestText = 4000;

QString noteOf(const Setting& setting, bool isSet) {
  QStringList parts;
  const auto standard = setting.defaultValue();
  if (standard) parts << u"default "_s + bareText(*standard);
  // Where there is no default, it says what it means that there is no value.
  if (!setting.note.isEmpty() && (standard || !isSet)) parts << setting.note;
  switch (setting.store) {
    case SettingStore::SharedList:
      break;
    case SettingStore::OwnDefaults:
      parts << u"each program's own"_s;
      break;
    case SettingStore::Environment:
      parts << u"from the environment"_s;
      break;
    case SettingStore::MainApplication:
      if (setting.notice != Notice::fontSizeDidChange && setting.notice != Notice::settingsDidChange)
        parts << u"no program on this computer uses it"_s;
      break;
  }
  return parts.join(u"; "_s);
}

}  // namespace

SettingsTableModel::SettingsTableModel(PreferenceStore& store, QObject* parent)
    : QAbstractTableModel(parent), m_store(store) {
  connect(&store, &PreferenceStore::changed, this,
          [this] { Q_EMIT dataChanged(index(0, ValueColumn), index(rowCount() - 1, NoteColumn)); });
}

int SettingsTableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(settingsTable().size());
}

int SettingsTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columns;
}

const Setting& SettingsTableModel::setting(const QModelIndex& index) {
  return settingsTable()[static_cast<size_t>(index.row())];
}

QString SettingsTableModel::valueText(const Setting& setting) const {
  const auto value = m_store.storedValue(setting.key);
  return value ? bareText(*value).left(longestText) : QString();
}

QVariant SettingsTableModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const Setting& row = setting(index);
  const auto note = [this, &row] { return noteOf(row, m_store.storedValue(row.key).has_value()); };
  if (role == Qt::ToolTipRole) return index.column() == ValueColumn ? valueText(row) : note();
  if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
  switch (index.column()) {
    case NameColumn:
      return QString(row.key);
    case ValueColumn:
      return valueText(row);
    default:
      return note();
  }
}

QVariant SettingsTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (section) {
    case NameColumn:
      return u"Setting"_s;
    case ValueColumn:
      return u"Value"_s;
    default:
      return u"Note"_s;
  }
}

Qt::ItemFlags SettingsTableModel::flags(const QModelIndex& index) const {
  const Qt::ItemFlags usual = QAbstractTableModel::flags(index);
  const bool isEditable = index.column() == ValueColumn && PreferenceStore::isEditable(setting(index));
  return isEditable ? usual | Qt::ItemIsEditable : usual;
}

bool SettingsTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || index.column() != ValueColumn) return false;
  const Setting& row = setting(index);
  const QString text = value.toString();
  // Also of a value too long for the cell: nothing was changed.
  if (text == valueText(row)) return true;
  std::optional<PropertyListValue> parsed;
  if (!text.isEmpty()) {
    parsed = settingFromText(text, typeOfText(row));
    if (!parsed || parsed->isNull()) {
      Q_EMIT edited(u"“%1” is no value for %2: %3 is expected."_s.arg(text, row.key, expectedText(row.type)));
      return false;
    }
  }
  QString reason;
  const bool isSaved = m_store.set(row.key, parsed, &reason);
  Q_EMIT dataChanged(index, index.siblingAtColumn(NoteColumn));
  Q_EMIT edited(isSaved ? QString() : reason);
  return isSaved;
}

}  // namespace quillo
