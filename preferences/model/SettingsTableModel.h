#pragma once

#include <QAbstractTableModel>

namespace quillo {

class PreferenceStore;
struct Setting;

// Every setting in a row: its name, its value, and what is to be known of it. Values are edited as `quilloctl settings
// set` takes them, and an empty one goes back to the default.
class SettingsTableModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { NameColumn, ValueColumn, NoteColumn, columns };

  // The store must outlive the model.
  explicit SettingsTableModel(PreferenceStore& store, QObject* parent = nullptr);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 Q_SIGNALS:
  // After an edit: why it was refused or not saved; empty after one that was saved.
  void edited(const QString& problem);

 private:
  [[nodiscard]] static const Setting& setting(const QModelIndex& index);
  [[nodiscard]] QString valueText(const Setting& setting) const;

  PreferenceStore& m_store;
};

}  // namespace quillo
