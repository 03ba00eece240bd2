#include "platform/linux/desktop/DisplayLoss.h"

#include "platform/QtInternals.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

namespace quillo {

static constexpr int longestSaveMilliseconds = 2000;

static std::mutex lock;
static std::function<void()> saveOnce;
static QtMessageHandler handlerBefore = nullptr;

// On the main thread.
static void saveNow() {
  std::function<void()> save;
  {
    const std::lock_guard guard(lock);
    save = std::exchange(saveOnce, nullptr);
  }
  if (save) save();
}

// Qt may notice the loss on a thread of its own, and the main thread at the same time: whichever comes first, the save
// is done before either ends the process.
static void saveFromAnyThread() {
  if (QThread::currentThread() == QCoreApplication::instance()->thread()) return saveNow();
  const auto done = std::make_shared<QSemaphore>();
  QMetaObject::invokeMethod(
      QCoreApplication::instance(),
      [done] {
        saveNow();
        done->release();
      },
      Qt::QueuedConnection);
  done->tryAcquire(1, longestSaveMilliseconds);
}

static void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  const bool isLoss =
      std::any_of(std::begin(QtInternals::displayLossMessages), std::end(QtInternals::displayLossMessages),
                  [&text](QLatin1StringView beginning) { return text.startsWith(beginning); });
  if (isLoss && QCoreApplication::instance()) saveFromAnyThread();
  if (handlerBefore) handlerBefore(type, context, text);
}

DisplayLoss::DisplayLoss(std::function<void()> save) {
  {
    const std::lock_guard guard(lock);
    saveOnce = std::move(save);
  }
  handlerBefore = qInstallMessageHandler(handleMessage);
}

DisplayLoss::~DisplayLoss() {
  qInstallMessageHandler(handlerBefore);
  const std::lock_guard guard(lock);
  saveOnce = nullptr;
}

}  // namespace quillo
