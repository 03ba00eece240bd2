#pragma once

namespace quillo {

// Writes the calling thread's stack to a descriptor, a frame a line, with functions, files and lines as far as the
// debugging information knows them. `signalContext` is the third argument of a signal handler, or null outside one;
// with it the stack begins where the signal struck. Each frame is written as soon as it is known. Allocates memory and
// reads files: after a crash it may hang or crash again, so the caller has a way out of both. Does not throw.
void writeSymbolizedStack(int descriptor, void* signalContext) noexcept;

}  // namespace quillo
