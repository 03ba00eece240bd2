#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace quillo::ctl {

// Nothing for what is neither.
[[nodiscard]] std::optional<bool> yesOrNo(const QString& text);

// Questions to a person at a terminal, one a line, each with what is usual in brackets.
class Questions {
 public:
  enum class Answer { Taken, Skipped, None };  // None: the input ended
  // Takes an answer over, or says why it is none.
  using Take = std::function<bool(const QString& text, QString* reason)>;

  // Whether standard input and output are a terminal.
  [[nodiscard]] static bool canBeAsked();

  // `introduction` is printed before the first question.
  explicit Questions(const QString& introduction);

  // Asks until `take` takes the answer. An empty one is the usual, which is not given to `take`: it is what is there
  // already.
  Answer ask(const QString& question, const QString& usual, const Take& take);
  // Yes unless it is denied, or the input ends.
  bool confirms(const QString& question);

 private:
  [[nodiscard]] static std::optional<QString> answerTo(const QString& question, const QString& usual);
};

}  // namespace quillo::ctl
