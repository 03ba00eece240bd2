#include "quilloctl/Questions.h"

#include "quilloctl/Streams.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace quillo::ctl {

using namespace Qt::StringLiterals;

// Who has not found an answer by then is no person.
static constexpr int mostAttempts = 20;

std::optional<bool> yesOrNo(const QString& text) {
  const QString word = text.trimmed().toLower();
  if (word == u"yes" || word == u"y") return true;
  if (word == u"no" || word == u"n") return false;
  return std::nullopt;
}

bool Questions::canBeAsked() {
  return ::isatty(STDIN_FILENO) != 0 && ::isatty(STDOUT_FILENO) != 0;
}

Questions::Questions(const QString& introduction) {
  print(introduction);
}

std::optional<QString> Questions::answerTo(const QString& question, const QString& usual) {
  const QByteArray line = withoutControls(u"%1 [%2]: "_s.arg(question, usual)).toUtf8();
  std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
  std::fflush(stdout);
  char* buffer = nullptr;
  size_t capacity = 0;
  const ssize_t length = ::getline(&buffer, &capacity, stdin);
  const QString answer = length < 0 ? QString() : QString::fromUtf8(buffer, length);
  std::free(buffer);
  if (length < 0) {
    print(QString());
    return std::nullopt;
  }
  return answer.trimmed();
}

Questions::Answer Questions::ask(const QString& question, const QString& usual, const Take& take) {
  for (int attempt = 0; attempt < mostAttempts; ++attempt) {
    const auto answer = answerTo(question, usual);
    if (!answer) return Answer::None;
    if (answer->isEmpty()) return Answer::Taken;
    if (*answer == u"-") return Answer::Skipped;
    QString reason;
    if (take(*answer, &reason)) return Answer::Taken;
    print(u"  "_s + reason);
  }
  return Answer::None;
}

bool Questions::confirms(const QString& question) {
  bool yes = true;
  const auto take = [&yes](const QString& text, QString* reason) {
    const auto said = yesOrNo(text);
    yes = said.value_or(false);
    if (!said) *reason = u"yes or no"_s;
    return said.has_value();
  };
  return ask(question, u"yes"_s, take) == Answer::Taken && yes;
}

}  // namespace quillo::ctl
