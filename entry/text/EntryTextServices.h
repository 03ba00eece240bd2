#pragma once

namespace quillo {

class NotificationCenter;
class SpellChecker;
class UserDefaults;

// What an EntryViewTextView works with. All of it must outlive the view.
struct EntryTextServices {
  // With the view's switches, which it also writes.
  UserDefaults& defaults;
  // Where other code of the process tells that it has changed the switches.
  NotificationCenter& localCenter;
  // One for all views of the process, since a dictionary takes megabytes.
  SpellChecker& spellChecker;
};

}  // namespace quillo
