// Grammar in the text view, with a stand-in for the local server.

#include "entry/spelling/GrammarReviewer.h"
#include "tests/ui/entry/EntryViewFixture.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTextLayout>

namespace quillo {
namespace {

// Answers every request alike, and keeps what it was asked.
class LanguageServerDouble : public QTcpServer {
 public:
  LanguageServerDouble() {
    EXPECT_TRUE(listen(QHostAddress::LocalHost));
    connect(this, &QTcpServer::newConnection, this, [this] {
      while (QTcpSocket* socket = nextPendingConnection())
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(*socket); });
    });
  }
  QUrl url() const { return u"http://127.0.0.1:%1"_s.arg(serverPort()); }

  QByteArray matches{"[]"};
  QByteArray status{"200 OK"};
  QList<QByteArray> texts;
  int probes{0};

 private:
  void read(QTcpSocket& socket) {
    m_received += socket.readAll();
    const auto headEnd = m_received.indexOf("\r\n\r\n");
    if (headEnd < 0) return;
    const auto lengthAt = m_received.toLower().indexOf("content-length:");
    const auto length = lengthAt < 0 ? 0 : m_received.mid(lengthAt + 15, 10).split('\r')[0].trimmed().toLongLong();
    if (m_received.size() < headEnd + 4 + length) return;
    const QByteArray body = m_received.mid(headEnd + 4);
    const bool isCheck = m_received.startsWith("POST /v2/check ");
    if (isCheck)
      texts << QByteArray::fromPercentEncoding(body.mid(body.indexOf("text=") + 5));
    else
      ++probes;
    m_received.clear();
    const QByteArray answer = isCheck ? "{\"matches\":" + matches + '}' : "[{\"code\":\"en\"}]";
    socket.write("HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
                 QByteArray::number(answer.size()) + "\r\n\r\n" + answer);
    socket.disconnectFromHost();
  }
  QByteArray m_received;
};

QByteArray match(int offset, int length, const char* message, const char* replacement) {
  return "{\"offset\":" + QByteArray::number(offset) + ",\"length\":" + QByteArray::number(length) + ",\"message\":\"" +
         message + "\",\"replacements\":[{\"value\":\"" + replacement + "\"}],\"rule\":{\"issueType\":\"grammar\"}}";
}

class GrammarTest : public EntryViewTest {
 protected:
  void showWithGrammar() {
    defaults().setBoolForKey(true, Key::editorGrammarCheckEnabled);
    defaults().setBoolForKey(false, Key::editorSpellCheckEnabled);
    defaults().setBoolForKey(false, Key::editorCorrectSpellingEnabled);
    defaults().setObjectForKey(PropertyListValue(server.url().toString()), Key::grammarServerURL);
    show();
    view->checking().grammarReviewer().setPauseDuration(std::chrono::milliseconds(50));
  }
  bool waitForTexts(qsizetype count) {
    return QTest::qWaitFor([&] { return server.texts.size() >= count; }, 5000);
  }

  LanguageServerDouble server;
};

TEST_F(GrammarTest, OnlyServersOnThisMachineAreAsked) {
  for (const auto& url : {u"http://localhost:8081"_s, u"http://127.0.0.1:1"_s, u"http://[::1]:1"_s})
    EXPECT_TRUE(GrammarClient(QUrl(url)).hasServer()) << url.toStdString();
  for (const auto& url : {u"http://example.org"_s, u"http://10.0.0.1"_s, u"http://localhost.example.org"_s,
                          u"file:///x"_s, u"http://127.0.0.1.example.org"_s, u""_s})
    EXPECT_FALSE(GrammarClient(QUrl(url)).hasServer()) << url.toStdString();
}

TEST_F(GrammarTest, AnswersAreBoundedAndSpellingIsLeftOut) {
  const struct {
    const char* name;
    QByteArray json;
    int issues;  // -1: no answer at all
  } cases[] = {
      {"no JSON", "<html>", -1},
      {"one", R"({"matches":[{"offset":0,"length":3}]})", 1},
      {"beyond", R"({"matches":[{"offset":8,"length":3},{"offset":99,"length":1}]})", 0},
      {"negative", R"({"matches":[{"offset":-1,"length":3},{"offset":1,"length":-3},{"length":1}]})", 0},
      {"overflow", R"({"matches":[{"offset":9223372036854775807,"length":9223372036854775807}]})", 0},
      {"wrong kinds", R"({"matches":[1,"a",null,{"offset":"1","length":[]}]})", 0},
      {"spelling", R"({"matches":[{"offset":0,"length":3,"rule":{"issueType":"misspelling"}}]})", 0},
      {"many", R"({"matches":[)" + QByteArray(R"({"offset":0,"length":3},)").repeated(500) + "1]}", 100},
      {"deep", R"({"matches":)" + QByteArray(5000, '['), -1},
  };
  for (const auto& c : cases) {
    const auto issues = GrammarClient::issuesOfAnswer(c.json, 10);
    EXPECT_EQ(issues ? static_cast<int>(issues->size()) : -1, c.issues) << c.name;
  }
}

TEST_F(GrammarTest, AParagraphIsReviewedAfterAPauseAndTheMenuHelps) {
  server.matches = '[' + match(3, 4, "Two & two", "goes") + ']';
  showWithGrammar();
  type(u"he going\n\nit \u00e9& rains"_s);
  ASSERT_TRUE(waitForTexts(2));
  EXPECT_EQ(server.texts, (QList<QByteArray>{"he going", "it \xc3\xa9& rains"}));
  ASSERT_TRUE(QTest::qWaitFor([this] { return view->checking().highlighter()->issueAt(14).has_value(); }, 5000));
  EXPECT_EQ(view->document()->firstBlock().layout()->formats().size(), 1);
  const auto menu = menuAt(4);
  EXPECT_TRUE(item(*menu, u"Two && two"_s));
  QAction* replacement = item(*menu, u"goes"_s);
  ASSERT_TRUE(replacement);
  replacement->trigger();
  EXPECT_EQ(view->string(), u"he goesg\n\nit \u00e9& rains"_s);
  // Only what changed is asked again; an issue beside the edit stays meanwhile.
  select(15, 15);
  type(u"!"_s);
  select(0, 0);
  type(u"oh "_s);
  EXPECT_FALSE(view->checking().highlighter()->issueAt(4));
  ASSERT_TRUE(waitForTexts(4));
  EXPECT_EQ(server.texts.mid(2), (QList<QByteArray>{"oh he goesg", "it \xc3\xa9&! rains"}));

  view->setGrammarCheckingEnabled(false);
  EXPECT_TRUE(view->document()->firstBlock().layout()->formats().isEmpty());
}

TEST_F(GrammarTest, AnIssueMovesWithTheTextBeforeIt) {
  server.matches = '[' + match(3, 4, "m", "r") + ']';
  showWithGrammar();
  type(u"he going"_s);
  ASSERT_TRUE(QTest::qWaitFor([this] { return view->checking().highlighter()->issueAt(4).has_value(); }, 5000));
  server.matches = "[]";
  select(0, 0);
  type(u"ab"_s);
  const auto issue = view->checking().highlighter()->issueAt(6);
  EXPECT_EQ(issue ? issue->range : TextRange::nowhere(), (TextRange{5, 4}));
}

TEST_F(GrammarTest, TheMenuItemFollowsWhetherThereIsAServer) {
  showWithGrammar();
  {
    const auto menu = menuAt(0);
    QAction* grammar = item(*menu, u"Check Grammar With Spelling"_s);
    EXPECT_FALSE(grammar->isEnabled());
    EXPECT_TRUE(QTest::qWaitFor([&] { return grammar->isEnabled(); }, 5000));
    grammar->trigger();
    EXPECT_FALSE(defaults().boolForKey(Key::editorGrammarCheckEnabled));
    grammar->trigger();
  }
  server.close();
  const auto menu = menuAt(0);
  QAction* grammar = item(*menu, u"Check Grammar With Spelling"_s);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !grammar->isEnabled(); }, 5000));
}

TEST_F(GrammarTest, AfterAFailureItRestsUntilTheUserComesBack) {
  server.status = "500 Internal Server Error";
  showWithGrammar();
  type(u"he going"_s);
  ASSERT_TRUE(waitForTexts(1));
  GrammarClient& client = view->checking().grammarReviewer().client();
  ASSERT_TRUE(QTest::qWaitFor([&] { return client.availability() == GrammarClient::Availability::Unavailable; }, 5000));
  type(u" on"_s);
  EXPECT_FALSE(view->checking().grammarReviewer().isWaiting());
  server.status = "200 OK";
  view->clearFocus();
  view->setFocus();
  ASSERT_TRUE(waitForTexts(2));
  EXPECT_EQ(server.texts.last(), "he going on");
}

}  // namespace
}  // namespace quillo
