#pragma once

namespace quillo {

// Which rights new files do not get. What our programs make is for the user alone; what a program makes that they start
// is as its user has set it. While an object of this class exists, the process has the mask that it was started with:
// for the moment in which it starts another program. Other threads give their files a mode of their own. Main thread
// only.
class FileModeMask {
 public:
  // From now on new files of this process are the user's alone. Once, first of all.
  static void makePrivate();

  FileModeMask();
  ~FileModeMask();
  FileModeMask(const FileModeMask&) = delete;
  FileModeMask& operator=(const FileModeMask&) = delete;
};

}  // namespace quillo
