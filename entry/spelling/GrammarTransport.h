#pragma once

#include <QByteArray>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

// Asks an HTTP server on this machine. Made in the module quillo-grammar, the only part of the spelling that has the
// network library. Redirections are not followed and proxies are not used. Main thread only.
class GrammarTransport {
 public:
  // What the server answered; nothing where it did not, or answered with an error.
  using Answer = std::function<void(const std::optional<QByteArray>& body)>;

  virtual ~GrammarTransport() = default;

  // `form`: what to post, as a form of the web is encoded; null to get the page. The answer comes from the event loop,
  // and not any more once the transport is gone.
  virtual void ask(const QUrl& url, const QByteArray& form, Answer answer) = 0;
};

// The module's function "quilloMakeGrammarTransport". Milliseconds without a byte after which an answer counts as none;
// the bytes above which it is too large.
using MakeGrammarTransport = void(int timeout, qint64 largestAnswer, std::unique_ptr<GrammarTransport>& transport);

}  // namespace quillo
