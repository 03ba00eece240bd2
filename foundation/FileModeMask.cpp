#include "foundation/FileModeMask.h"

#include <sys/stat.h>

#include <optional>

namespace quillo {

namespace {

constexpr mode_t privateMask = 077;
std::optional<mode_t> maskAtStart;  // nothing where the process kept it

}  // namespace

void FileModeMask::makePrivate() {
  maskAtStart = ::umask(privateMask);
}

FileModeMask::FileModeMask() {
  if (maskAtStart) ::umask(*maskAtStart);
}

FileModeMask::~FileModeMask() {
  if (maskAtStart) ::umask(privateMask);
}

}  // namespace quillo
