#pragma once

#include "quilloctl/Command.h"

namespace quillo::ctl {

// Takes the last import into the journal back, or with `isTrial` tells what that would come to. Answers an exit code.
int takeImportBack(Context& context, bool isTrial);

}  // namespace quillo::ctl
