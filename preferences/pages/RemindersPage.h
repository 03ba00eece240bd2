#pragma once

#include "preferences/pages/PreferencePage.h"

namespace quillo {

class ReminderRuleEditor;
struct PreferencesServices;
struct ReminderChoice;

// Whether, when and how reminders come, and one to try.
class RemindersPage : public PreferencePage {
  Q_OBJECT

 public:
  RemindersPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent);

 private:
  void save(const ReminderChoice& choice);
  void tryNow();

  PreferencesServices& m_services;
  ReminderRuleEditor* m_editor;
  FormRow* m_trial;
  bool m_isSaving{false};
};

}  // namespace quillo
