#pragma once

#include <functional>
#include <map>
#include <string>

namespace quillo {

// What can be called, by names such as "read/small/xml/ours".
using Contenders = std::map<std::string, std::function<void()>>;

// Each also leaves in `directory` the files that the contenders in other languages take.
void addLists(Contenders& contenders, const std::string& directory);
void addReminders(Contenders& contenders);
void addSettings(Contenders& contenders, const std::string& directory);

}  // namespace quillo
