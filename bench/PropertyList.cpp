#include "SampleLists.h"
#include "foundation/PropertyListSerialization.h"

#include <QtEndian>

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

// Reading and writing property lists: a settings file as the agent has it, and files of 16 MiB. For the large ones the
// counter "peak" is the most memory that a process reading the file has used beyond what it used before it had the
// file, as a multiple of the file's size; the file itself counts as 1.

namespace quillo {
namespace {

using namespace Qt::StringLiterals;
using Format = PropertyListFormat;

constexpr qsizetype largeSize = qsizetype{16} << 20;

QByteArray openStepOf(const PropertyListValue& value) {
  if (value.isDictionary()) {
    QByteArray text = "{\n";
    for (auto it = value.dictionary().begin(); it != value.dictionary().end(); ++it)
      text += it.key().toUtf8() + " = " + openStepOf(it.value()) + ";\n";
    return text + '}';
  }
  if (value.isArray()) {
    QByteArray text = "(";
    for (const auto& item : value.array()) text += openStepOf(item) + ",\n";
    return text + ')';
  }
  return '"' + value.description().toUtf8() + '"';
}

QByteArray encoded(const PropertyListValue& value, Format format) {
  if (format == Format::OpenStep) return openStepOf(value);
  return PropertyListSerialization::dataWithPropertyList(value, format).value_or(QByteArray());
}

QByteArray repeated(const char* begin, const char* unit, const char* end) {
  return begin + QByteArray(unit).repeated(largeSize / static_cast<qsizetype>(strlen(unit))) + end;
}

// Text of words that differ, each the next number in base 64: nothing can be shared.
QByteArray openStepWords(int length) {
  static constexpr char letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_$";
  QByteArray text = "(";
  for (quint32 i = 0; text.size() < largeSize; ++i) {
    for (int at = 0; at < length; ++at) text += letters[i >> (6 * at) & 63];
    text += ',';
  }
  return text + ')';
}

void appendBigEndian(QByteArray* data, quint64 value, int width) {
  char bytes[8];
  qToBigEndian(value, bytes);
  data->append(bytes + 8 - width, width);
}

// An array of `references` of one byte each to one boolean.
QByteArray binaryOfReferences() {
  QByteArray data = "bplist00\xaf\x12";
  appendBigEndian(&data, static_cast<quint64>(largeSize), 4);
  data += QByteArray(largeSize, 1) + char(9);
  const auto table = static_cast<quint64>(data.size());
  appendBigEndian(&data, 8, 4);
  appendBigEndian(&data, table - 1, 4);
  data += QByteArray(6, 0) + char(4) + char(1);
  for (const quint64 field : {quint64{2}, quint64{0}, table}) appendBigEndian(&data, field, 8);
  return data;
}

// 65535 dictionaries at most, whose references of two bytes name keys and values out of a few hundred.
QByteArray binaryOfDictionaries() {
  constexpr quint64 keys = 500;
  const auto dictionaries = static_cast<quint64>(largeSize) / (keys * 4 + 8);
  QByteArray data = "bplist00";
  QList<quint64> offsets;
  const auto begin = [&](quint8 marker, quint64 count) {
    offsets << static_cast<quint64>(data.size());
    data.append(static_cast<char>(marker)).append('\x11');
    appendBigEndian(&data, count, 2);
  };
  begin(0xAF, dictionaries);
  for (quint64 i = 0; i < dictionaries; ++i) appendBigEndian(&data, 1 + i, 2);
  for (quint64 i = 0; i < dictionaries; ++i) {
    begin(0xDF, keys);
    for (int half = 0; half < 2; ++half)
      for (quint64 key = 0; key < keys; ++key) appendBigEndian(&data, dictionaries + 1 + key, 2);
  }
  for (quint64 key = 0; key < keys; ++key) {
    offsets << static_cast<quint64>(data.size());
    data += '\x54' + QByteArray::number(1000 + key);
  }
  const auto table = static_cast<quint64>(data.size());
  for (const quint64 offset : offsets) appendBigEndian(&data, offset, 4);
  data += QByteArray(6, 0) + char(4) + char(2);
  for (const quint64 field : {static_cast<quint64>(offsets.size()), quint64{0}, table})
    appendBigEndian(&data, field, 8);
  return data;
}

// In a process of its own, as the peak of a process never falls.
double peakMultiple(const QByteArray& file) {
  int channel[2];
  if (pipe(channel) != 0) return -1;
  const pid_t child = fork();
  if (child == 0) {
    // The peak starts at what the parent had; only what is beyond the present size counts.
    const auto resident = [] {
      qint64 pages = 0;
      if (FILE* status = fopen("/proc/self/statm", "r")) {
        if (fscanf(status, "%*s %lld", &pages) != 1) pages = 0;
        fclose(status);
      }
      return pages * sysconf(_SC_PAGESIZE);
    };
    malloc_trim(0);  // memory that the parent has freed would be used again uncounted
    if (FILE* reset = fopen("/proc/self/clear_refs", "w")) {
      fputs("5", reset);  // the peak becomes the present size
      fclose(reset);
    }
    const qint64 before = resident();
    const auto list = PropertyListSerialization::propertyListWithData(file);
    qint64 peak = 0;
    if (FILE* status = fopen("/proc/self/status", "r")) {
      char line[256];
      while (fgets(line, sizeof line, status))
        if (sscanf(line, "VmHWM: %lld", &peak) == 1) break;
      fclose(status);
    }
    const double multiple = 1 + static_cast<double>(peak * 1024 - before) / static_cast<double>(file.size());
    const bool sent = write(channel[1], &multiple, sizeof multiple) == sizeof multiple;
    _exit(sent ? 0 : 1);
  }
  double multiple = -1;
  if (child < 0 || read(channel[0], &multiple, sizeof multiple) != sizeof multiple) multiple = -1;
  if (child > 0) waitpid(child, nullptr, 0);
  close(channel[0]);
  close(channel[1]);
  return multiple;
}

void read(benchmark::State& state, const QByteArray& file) {
  for (auto _ : state) {
    auto list = PropertyListSerialization::propertyListWithData(file);
    // Files made to be dear may be; with a peak as low as the others have.
    if (!list) state.counters["refused"] = 1;
    benchmark::DoNotOptimize(list);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * file.size());
  if (file.size() > 1 << 20) state.counters["peak"] = peakMultiple(file);
}

void write(benchmark::State& state, const PropertyListValue& value, Format format) {
  qsizetype size = 0;
  for (auto _ : state) {
    const QByteArray data = encoded(value, format);
    size = data.size();
    benchmark::DoNotOptimize(data.constData());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * size);
}

template <typename... Arguments>
void add(const char* name, Arguments... arguments) {
  benchmark::RegisterBenchmark(name, [=](benchmark::State& state) {
    if constexpr (sizeof...(Arguments) == 1)
      read(state, arguments...);
    else
      write(state, arguments...);
  })->Unit(benchmark::kMicrosecond);
}

const bool registered = [] {
  const PropertyListValue small = sampleSettings();
  add("read/settings/XML", encoded(small, Format::XML));
  add("read/settings/binary", encoded(small, Format::Binary));
  add("read/settings/OpenStep", encoded(small, Format::OpenStep));
  add("write/settings/XML", small, Format::XML);
  add("write/settings/binary", small, Format::Binary);
  const PropertyListValue entries = sampleEntries(55000);  // about 16 MiB as XML, half of that in the other forms
  add("read/large/XML", encoded(entries, Format::XML));
  add("read/large/binary", encoded(entries, Format::Binary));
  add("read/large/OpenStep", encoded(entries, Format::OpenStep));
  add("write/large/XML", entries, Format::XML);
  add("write/large/binary", entries, Format::Binary);
  // Files made to be dear.
  add("read/hostile/binary/references", binaryOfReferences());
  add("read/hostile/binary/dictionaries", binaryOfDictionaries());
  add("read/hostile/XML/booleans", repeated("<array>", "<true/>", "</array>"));
  add("read/hostile/XML/dictionaries", repeated("<array>", "<dict><key/><true/></dict>", "</array>"));
  add("read/hostile/XML/arrays", repeated("<array>", "<array><true/></array>", "</array>"));
  add("read/hostile/XML/comments", repeated("<array>", "<!---->", "</array>"));
  add("read/hostile/XML/attributes", repeated("<array>", "<true a=''/>", "</array>"));
  add("read/hostile/XML/text", repeated("<string>", "a&#13;<!-- -->", "</string>"));
  add("read/hostile/OpenStep/words", openStepWords(4));
  add("read/hostile/OpenStep/arrays", repeated("(", "(a),", ")"));
  add("read/hostile/OpenStep/dictionaries", repeated("(", "{a;},", ")"));
  add("read/hostile/OpenStep/escapes", repeated("\"", "\\a", "\""));
  return true;
}();

}  // namespace
}  // namespace quillo
