#include "entry/session/JournalTags.h"

#include "foundation/Log.h"
#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"

#include <sys/resource.h>
#include <unistd.h>

#include <system_error>

namespace quillo {

using namespace Qt::StringLiterals;

JournalTags::~JournalTags() {
  m_stop.request_stop();
  if (m_thread.joinable()) m_thread.join();
}

void JournalTags::refresh(const std::optional<QUrl>& journal) {
  if (!journal || m_isReading) return;
  if (m_thread.joinable()) m_thread.join();
  m_isReading = true;
  const auto read = [this, url = *journal, stop = m_stop.get_token()] {
    // Of this thread alone; the person who types comes first.
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), 10);
    const QStringList tags =
        QLJournalIndex(QLJournalPackageFile::openPackage(url, /*create=*/false, nullptr), stop).tagsByUse();
    // Through the event loop, so that they are taken in the thread that uses them.
    QMetaObject::invokeMethod(
        this,
        [this, tags] {
          m_tags = tags;
          m_isReading = false;
        },
        Qt::QueuedConnection);
  };
  // Qt's threads have an event loop each, and end the program where there are no descriptors left for one.
  try {
    m_thread = std::thread(read);
  } catch (const std::system_error& error) {
    m_isReading = false;
    QLLogInfo(u"The tags in use cannot be read: %1"_s.arg(QString::fromLocal8Bit(error.what())));
  }
}

}  // namespace quillo
