#pragma once

#include "quilloctl/Command.h"

namespace quillo::ctl {

// Takes the last import into the journal back, or with `isTrial` tells what that would come to. Answers an exit code.
int takeImportBack(Context& context, bool isTrial);

// "1 entry", "12 entries".
[[nodiscard]] QString entriesInWords(qint64 count);

}  // namespace quillo::ctl
