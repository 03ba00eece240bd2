#pragma once

#include "preferences/pages/PreferencePage.h"

namespace quillo {

class ShortcutRecorder;
struct PreferencesServices;

// The agent, when it starts, the key that opens it, and the size of the text.
class GeneralPage : public PreferencePage {
  Q_OBJECT

 public:
  GeneralPage(PreferenceStore& store, PreferencesServices& services, QWidget* parent);

 private:
  void addAgent();
  void addShortcut();
  void addFontSize();
  void addLook();
  void setAgentEnabled(bool isEnabled);
  void setStartsAtLogin(bool starts);

  PreferencesServices& m_services;
  Switch* m_agent;
  Switch* m_atLogin;
  FormRow* m_agentRow{nullptr};
  FormRow* m_atLoginRow{nullptr};
};

}  // namespace quillo
