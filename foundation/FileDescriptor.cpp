#include "foundation/FileDescriptor.h"

#include <cerrno>

namespace quillo {

int writeAll(int descriptor, QByteArrayView bytes, qsizetype* written) {
  qsizetype done = 0;
  int failure = 0;
  // Ends: every turn writes at least one byte, repeats an interrupted call, or fails.
  while (done < bytes.size() && failure == 0) {
    const ssize_t count = ::write(descriptor, bytes.data() + done, static_cast<size_t>(bytes.size() - done));
    if (count > 0)
      done += count;
    else if (count == 0)
      failure = ENOSPC;
    else if (errno != EINTR)
      failure = errno;
  }
  if (written) *written = done;
  return failure;
}

}  // namespace quillo
