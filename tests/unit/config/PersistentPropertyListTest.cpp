#include "config/PersistentPropertyList.h"
#include "foundation/FileContents.h"
#include "foundation/FileDescriptor.h"
#include "foundation/FolderLock.h"
#include "tests/support/TestHome.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <poll.h>
#include <sched.h>
#include <sys/inotify.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <new>
#include <thread>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::HasSubstr;

// Notes "will K" and "did K=value", the value as the store shows it inside the notice.
class Notices : public KeyValueObserver {
 public:
  Notices(PersistentPropertyList& list, const QStringList& keys) : m_list(list) {
    for (const QString& key : keys) m_registrations.push_back(list.addObserver(*this, key));
  }
  void observeWillChange(const QString& key, KeyValueObservable&, const void*) override {
    add(QLatin1StringView("will ") + key);
  }
  void observeValueForKeyPath(const QString& key, KeyValueObservable&, const void*) override {
    const auto value = m_list.valueForKey(key);
    add(QLatin1StringView("did ") + key + u'=' + (value ? value->description() : u"absent"_s));
  }
  std::vector<std::string> take() { return std::exchange(m_seen, {}); }

 private:
  void add(const QString& text) { m_seen.push_back(text.toStdString()); }
  PersistentPropertyList& m_list;
  std::vector<std::unique_ptr<Registration>> m_registrations;
  std::vector<std::string> m_seen;
};

class PersistentPropertyListTest : public testing::Test {
 protected:
  QString path() const { return home.path(u"list.plist"_s); }
  std::unique_ptr<PersistentPropertyList> open() {
    Error error;
    auto list = PersistentPropertyList::withPropertyListURL(QUrl::fromLocalFile(path()), &error);
    EXPECT_TRUE(list) << error.description().toStdString();
    return list;
  }
  void write(const PropertyListDictionary& content) {
    writeRaw(*PropertyListSerialization::dataWithPropertyList(content, PropertyListFormat::XML));
  }
  void writeRaw(const QByteArray& bytes) { ASSERT_TRUE(writeFileInPlace(path(), bytes)); }
  PropertyListDictionary onDisk(PropertyListFormat* format = nullptr) {
    const auto bytes = contentsOfFile(path());
    return bytes ? PropertyListSerialization::propertyListWithData(*bytes, format)->dictionary()
                 : PropertyListDictionary();
  }
  TestHome home;
};

TEST_F(PersistentPropertyListTest, MissingFileIsEmptyAndTheFirstSetWritesBinary) {
  const auto list = open();
  EXPECT_TRUE(list->allProperties().isEmpty());
  EXPECT_FALSE(QFileInfo::exists(path()));
  list->setBoolForKey(true, u"A"_s);
  PropertyListFormat format{};
  EXPECT_EQ(onDisk(&format), (PropertyListDictionary{{u"A"_s, true}}));
  EXPECT_EQ(format, PropertyListFormat::Binary);
}

TEST_F(PersistentPropertyListTest, AnOpenStepFileIsReadAndItsSaveFailsWithTheValuePending) {
  writeRaw("{ Name = \"old\"; }");
  const auto list = open();
  EXPECT_EQ(list->valueForKey(u"Name"_s), PropertyListValue(u"old"_s));
  LogCapture log;
  list->setObjectForKey(u"new"_s, u"Name"_s);
  ASSERT_EQ(log.lines().size(), 1);
  EXPECT_THAT(log.lines()[0].toStdString(), HasSubstr("Failed to write property list file://"));
  EXPECT_EQ(list->valueForKey(u"Name"_s), PropertyListValue(u"new"_s));
  EXPECT_EQ(list->dirtyProperties().size(), 1);
  EXPECT_EQ(*contentsOfFile(path()), QByteArray("{ Name = \"old\"; }"));
}

TEST_F(PersistentPropertyListTest, AnEqualValueWritesNothing) {
  write({{u"flag"_s, true}});
  const auto list = open();
  Notices notices(*list, {u"flag"_s});
  QFile::remove(path());
  list->setIntegerForKey(1, u"flag"_s);
  EXPECT_THAT(notices.take(), ElementsAre());
  EXPECT_FALSE(QFileInfo::exists(path()));
}

TEST_F(PersistentPropertyListTest, RemovingAnAbsentKeyStillWritesAndTells) {
  const auto list = open();
  Notices notices(*list, {u"gone"_s});
  list->removeObjectForKey(u"gone"_s);
  EXPECT_THAT(notices.take(), ElementsAre("will gone", "did gone=<null>"));
  EXPECT_TRUE(QFileInfo::exists(path()));
  EXPECT_EQ(list->valueForKey(u"gone"_s), std::nullopt);
}

TEST_F(PersistentPropertyListTest, MergesWithTheOtherWriterAndTellsWhatItChanged) {
  write({{u"same"_s, 1}, {u"changed"_s, 1}, {u"removed"_s, 1}, {u"mine"_s, 1}});
  const auto list = open();
  Notices notices(*list, {u"same"_s, u"changed"_s, u"removed"_s, u"added"_s, u"mine"_s});
  write({{u"same"_s, 1}, {u"changed"_s, 2}, {u"added"_s, 3}, {u"mine"_s, 5}});
  list->setIntegerForKey(9, u"mine"_s);
  // The own change first; then what the read before the save found, the doubled will-change of a removal last.
  EXPECT_THAT(notices.take(), ElementsAre("will mine", "did mine=9", "will added", "did added=3", "will changed",
                                          "did changed=2", "will mine", "did mine=9", "will removed", "will removed"));
  EXPECT_EQ(onDisk(), (PropertyListDictionary{{u"same"_s, 1}, {u"changed"_s, 2}, {u"added"_s, 3}, {u"mine"_s, 9}}));
}

TEST_F(PersistentPropertyListTest, WritesIntoTheSameFile) {
  write({{u"long"_s, QString(2000, u'x')}});
  // A second name for the file, which a file in its place would not have.
  ASSERT_EQ(::link(QFile::encodeName(path()).constData(), QFile::encodeName(home.path(u"second"_s)).constData()), 0);
  open()->setObjectForKey(u"s"_s, u"long"_s);
  EXPECT_EQ(contentsOfFile(home.path(u"second"_s)), contentsOfFile(path()));
  EXPECT_EQ(onDisk(), (PropertyListDictionary{{u"long"_s, u"s"_s}}));
}

TEST_F(PersistentPropertyListTest, AListTurnedBadKeepsValuesUntilAGoodOneHealsIt) {
  write({{u"old"_s, 1}, {u"other"_s, 1}});
  const auto list = open();
  const auto makeDirectory = [this] { QFile::remove(path()), QDir().mkpath(path()); };
  const std::function<void()> damages[] = {[this] { writeRaw("<plist><dict><key>torn"); },
                                           [this] { writeRaw("bplist00"); }, makeDirectory};
  for (const auto& damage : damages) {
    damage();
    LogCapture log;
    Error error;
    EXPECT_FALSE(list->synchronize(&error));
    EXPECT_TRUE(error.localizedDescription.startsWith(path() + u": "_s)) << error.description().toStdString();
    EXPECT_EQ(list->lastError(), error);
    list->setIntegerForKey(list->integerForKey(u"mine"_s) + 1, u"mine"_s);
    list->removeObjectForKey(u"other"_s);
    EXPECT_EQ(list->integerForKey(u"old"_s), 1);
    EXPECT_EQ(list->valueForKey(u"other"_s), PropertyListValue(PropertyListValue::Null{}));
    EXPECT_FALSE(list->boolForKey(u"other"_s));
    for (const QString& line : log.lines())
      EXPECT_TRUE(line.startsWith(u"Failed to read property list file://"_s)) << line.toStdString();
    EXPECT_EQ(log.lines().size(), 3);
  }
  QDir().rmdir(path());
  write({{u"old"_s, 2}, {u"other"_s, 1}});
  EXPECT_TRUE(list->synchronize());
  EXPECT_EQ(list->lastError(), std::nullopt);
  EXPECT_EQ(onDisk(), (PropertyListDictionary{{u"old"_s, 2}, {u"mine"_s, 3}}));
  EXPECT_TRUE(list->dirtyProperties().isEmpty());
}

// Puts `bytes` into the file as soon as somebody has read it and closed it.
void completeAfterFirstRead(const QString& path, const QByteArray& bytes) {
  const FileDescriptor watch(::inotify_init1(IN_CLOEXEC));
  ::inotify_add_watch(watch.number(), QFile::encodeName(path).constData(), IN_CLOSE_NOWRITE);
  pollfd events{watch.number(), POLLIN, 0};
  ::poll(&events, 1, 2000);
  writeFileInPlace(path, bytes);
}

TEST_F(PersistentPropertyListTest, AListCaughtHalfWrittenIsReadOnceMore) {
  const PropertyListDictionary content{{u"K"_s, QString(2000, u'x')}};
  const auto whole = *PropertyListSerialization::dataWithPropertyList(content, PropertyListFormat::XML);
  // On a busy machine the other writer may come too late for the second look, but not each time.
  bool wasRead = false;
  for (int round = 0; round < 50 && !wasRead; ++round) {
    writeRaw(whole.left(100));
    std::thread writer(completeAfterFirstRead, path(), whole);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    wasRead = PersistentPropertyList::withPropertyListURL(QUrl::fromLocalFile(path())) != nullptr;
    writer.join();
  }
  EXPECT_TRUE(wasRead);
}

// Memory that the processes made by fork() share.
class SharedCounter {
 public:
  SharedCounter()
      : m_count(new (::mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
                    Count{0}) {}
  ~SharedCounter() { ::munmap(m_count, sizeof(Count)); }
  SharedCounter(const SharedCounter&) = delete;
  SharedCounter& operator=(const SharedCounter&) = delete;
  // Returns when it was called `count` times in all; false after ten seconds.
  bool countAndWaitFor(int count) {
    ++*m_count;
    const QDeadlineTimer deadline(10'000);
    while (*m_count < count && !deadline.hasExpired()) ::sched_yield();
    return *m_count >= count;
  }

 private:
  using Count = std::atomic<int>;
  Count* m_count;
};

TEST_F(PersistentPropertyListTest, TwoProgramsThatSaveAtOneInstantLoseNothing) {
  constexpr int rounds = 100;
  const auto key = [](int program, int round) { return u"%1.%2"_s.arg(program).arg(round % 10); };
  // Longer and shorter by turns, which is what leaves the tail of one writer behind another's text; and so long that
  // the saves meet, whatever else the machine does.
  const auto value = [](int round) { return QString((round * 7919) % 20'000, u'x') + QString::number(round); };
  SharedCounter arrivals;
  pid_t programs[2];
  for (int program = 0; program < 2; ++program) {
    programs[program] = ::fork();
    ASSERT_GE(programs[program], 0);
    if (programs[program] > 0) continue;
    const auto list = PersistentPropertyList::withPropertyListURL(QUrl::fromLocalFile(path()));
    bool isWell = list != nullptr;
    for (int round = 0; isWell && round < rounds; ++round) {
      if (!arrivals.countAndWaitFor(2 * (round + 1))) ::_exit(2);
      list->setObjectForKey(value(round), key(program, round));
      isWell = list->synchronize() && list->properties().value(key(program, round)) == PropertyListValue(value(round));
    }
    ::_exit(isWell ? 0 : 1);
  }
  for (const pid_t program : programs) {
    int status = 0;
    ASSERT_EQ(::waitpid(program, &status, 0), program);
    EXPECT_EQ(status, 0) << "a save failed, or was undone by the other";
  }
  const auto now = onDisk();
  for (int program = 0; program < 2; ++program)
    for (int round = rounds - 10; round < rounds; ++round)
      EXPECT_EQ(now.value(key(program, round)), PropertyListValue(value(round)));
}

TEST_F(PersistentPropertyListTest, ALockThatNobodyLetsGoOfDelaysOneSaveAndStopsNone) {
  const auto list = open();
  const FolderLock held(home.path(), FolderLock::Mode::Exclusive);
  LogCapture log;
  QElapsedTimer timer;
  timer.start();
  for (int i = 0; i < 20; ++i) list->setIntegerForKey(i, u"K"_s);
  EXPECT_LT(timer.elapsed(), 5000);
  EXPECT_EQ(log.lines().size(), 1);
  EXPECT_EQ(onDisk(), (PropertyListDictionary{{u"K"_s, 19}}));
}

TEST_F(PersistentPropertyListTest, AListThatIsNoDictionaryReadsAsAbsentAndIsLeftAlone) {
  const QByteArray array = "<plist><array><true/></array></plist>";
  writeRaw(array);
  const auto list = open();
  EXPECT_EQ(list->valueForKey(u"K"_s), std::nullopt);
  list->setBoolForKey(true, u"K"_s);
  EXPECT_TRUE(list->boolForKey(u"K"_s));
  EXPECT_EQ(contentsOfFile(path()), array);
}

TEST_F(PersistentPropertyListTest, TypedGettersTakeWhateverIsStored) {
  write({{u"tilde"_s, u"~/J"_s},
         {u"abs"_s, u"/a b%20"_s},
         {u"n"_s, 3},
         {u"dict"_s, PropertyListDictionary{{u"k"_s, 1}}}});
  const auto list = open();
  EXPECT_EQ(list->integerForKey(u"dict"_s), 0);
  EXPECT_EQ(list->URLForKey(u"tilde"_s), QUrl::fromLocalFile(home.path(u"J"_s)));
  EXPECT_EQ(list->URLForKey(u"abs"_s)->toLocalFile(), u"/a b%20"_s);
  EXPECT_EQ(list->URLForKey(u"n"_s), std::nullopt);
  EXPECT_EQ(list->dictionaryForKey(u"n"_s), std::nullopt);
  EXPECT_EQ(list->dictionaryForKey(u"dict"_s)->value(u"k"_s), PropertyListValue(1));
  list->setURLForKey(QUrl::fromLocalFile(u"/x/y z%"_s), u"abs"_s);
  EXPECT_EQ(list->valueForKey(u"abs"_s), PropertyListValue(u"/x/y z%"_s));
  list->setURLForKey(std::nullopt, u"abs"_s);
  EXPECT_EQ(onDisk().contains(u"abs"_s), false);
}

TEST_F(PersistentPropertyListTest, AnObserverMaySetAndEndItselfInsideANotice) {
  auto list = open();
  class Meddler : public KeyValueObserver {
   public:
    explicit Meddler(PersistentPropertyList& store) : m_store(store), m_own(store.addObserver(*this, u"in"_s)) {}
    void observeValueForKeyPath(const QString&, KeyValueObservable&, const void*) override {
      m_own.reset();
      m_store.setIntegerForKey(2, u"out"_s);
    }
    PersistentPropertyList& m_store;
    std::unique_ptr<Registration> m_own;
  } meddler(*list);
  list->setIntegerForKey(1, u"in"_s);
  list->setIntegerForKey(3, u"in"_s);
  const Notices outliving(*list, {u"in"_s});
  list.reset();  // before that registration ends
  EXPECT_EQ(onDisk(), (PropertyListDictionary{{u"in"_s, 3}, {u"out"_s, 2}}));
}

}  // namespace
}  // namespace quillo
