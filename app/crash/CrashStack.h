#pragma once

#include <string_view>

namespace quillo {

// The function "quilloWriteSymbolizedStack" of the module quillo-crash-stack, the only part of the program that has the
// library for debugging information. Gives the calling thread's stack to `write`, a frame a line, with functions, files
// and lines as far as that information knows them. `signalContext` is the third argument of a signal handler, or null
// outside one; with it the stack begins where the signal struck. Each frame is given as soon as it is known. Allocates
// memory and reads files: after a crash it may hang or crash again, so the caller has a way out of both. Does not
// throw.
using WriteSymbolizedStack = void(void* signalContext, int descriptor, void (*write)(int descriptor, std::string_view));

}  // namespace quillo
