#pragma once

#include <QWidget>

#include <functional>

class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace quillo {

class ChoiceBox;
class Form;
class FormRow;
class PreferenceStore;
class Switch;

// A page of the preferences: a title over a form. Its fields follow the settings, whoever changes them, and what a
// field is set to is saved at once; why it could not be stands in its row.
class PreferencePage : public QWidget {
  Q_OBJECT

 public:
  // The store must outlive the page.
  PreferencePage(const QString& title, PreferenceStore& store, QWidget* parent);

  // Shows everything as it is now.
  virtual void showValues();
  // Has Tab go through the fields as they are laid out, whichever was made first.
  void orderTabs();

 protected:
  void showEvent(QShowEvent* event) override;

  [[nodiscard]] PreferenceStore& store() const { return m_store; }
  [[nodiscard]] Form& form() const { return *m_form; }
  // "~/Documents".
  [[nodiscard]] static QString pathInWords(const QString& path);
  [[nodiscard]] QPushButton* makeButton(const QString& title, const QString& name);
  [[nodiscard]] QVBoxLayout& column() const { return *m_column; }

  // Rows of one field that is bound to the setting and has its key as object name.
  FormRow* addSwitch(const QString& label, const QString& key);
  // `problem` answers why a text cannot be the setting's; an empty text goes back to the default. Saved when the field
  // is left, or with Return.
  FormRow* addText(const QString& label, const QString& key, std::function<QString(const QString& text)> problem);

  // For fields that need more than that: `show` is called whenever the settings may read differently.
  void addShower(std::function<void()> show) { m_showers.push_back(std::move(show)); }

 private:
  PreferenceStore& m_store;
  QVBoxLayout* m_column;
  Form* m_form;
  std::vector<std::function<void()>> m_showers;
};

}  // namespace quillo
