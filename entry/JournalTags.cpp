#include "entry/JournalTags.h"

#include "qlcore/QLJournalIndex.h"
#include "qlcore/QLJournalPackageFile.h"

namespace quillo {

JournalTags::~JournalTags() {
  m_stop.request_stop();
  if (m_reading) m_reading->wait();
}

void JournalTags::refresh(const std::optional<QUrl>& journal) {
  if (!journal || (m_reading && !m_reading->isFinished())) return;
  // The result goes through the event loop, so that it is taken in the thread that uses it; a finished thread's object
  // is replaced by the next.
  m_reading.reset(QThread::create([this, url = *journal, stop = m_stop.get_token()] {
    const QStringList tags =
        QLJournalIndex(QLJournalPackageFile::openPackage(url, /*create=*/false, nullptr), stop).tagsByUse();
    QMetaObject::invokeMethod(
        this, [this, tags] { m_tags = tags; }, Qt::QueuedConnection);
  }));
  m_reading->start(QThread::LowPriority);
}

}  // namespace quillo
