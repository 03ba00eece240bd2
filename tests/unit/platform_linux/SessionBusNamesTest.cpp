#include "platform/linux/SessionBusApplications.h"
#include "platform/linux/SessionBusNotifications.h"

#include <gtest/gtest.h>

namespace quillo {
namespace {

using namespace Qt::StringLiterals;

TEST(SessionBusNames, AProcessHasOneNameAndTheNameOneProcess) {
  const RunningApplication agent{u"com.quilloapp.quillo-agent"_s, 1234};
  ASSERT_EQ(busNameOfApplication(agent), u"com.quilloapp.quillo-agent.p1234"_s);
  EXPECT_EQ(applicationOfBusName(u"com.quilloapp.quillo-agent.p1234"_s, agent.bundleIdentifier), agent);

  for (const QString& name :
       {u"com.quilloapp.quillo-agent.p1234"_s, u"com.quilloapp.quillo"_s, u"com.quilloapp.quillo.1234"_s,
        u"com.quilloapp.quillo.p"_s, u"com.quilloapp.quillo.p0"_s, u"com.quilloapp.quillo.p-5"_s,
        u"com.quilloapp.quillo.p007"_s, u"com.quilloapp.quillo.p12.x"_s, u"com.quilloapp.quillo.p12x"_s,
        u"com.quilloapp.quillo.p99999999999999999999"_s, u":1.7"_s, u""_s})
    EXPECT_EQ(applicationOfBusName(name, u"com.quilloapp.quillo"_s), std::nullopt) << name.toStdString();

  for (const QString& bundle :
       {u""_s, u"quillo"_s, u"com..quillo"_s, u"com.quillo."_s, u"com.7quillo"_s, u"com.quillo app"_s,
        u"com.quillo\n"_s, u"com.quillö"_s, u"com."_s + QString(250, u'x')})
    EXPECT_EQ(busNameOfApplication({bundle, 1}), std::nullopt) << bundle.toStdString();
}

TEST(SessionBusNames, ANotificationNameIsOneLineOfText) {
  EXPECT_TRUE(isNotificationName(u"com.quilloapp.QuilloJournalPackagePathDidChangeNotification"_s));
  EXPECT_TRUE(isNotificationName(u"Größe 🪶"_s));
  EXPECT_TRUE(isNotificationName(QString(255, u'x')));
  EXPECT_FALSE(isNotificationName(QString(256, u'x')));
  EXPECT_FALSE(isNotificationName({}));
  for (const char16_t bad : {u'\0', u'\n', u'\x1b', u'\x7f', u'\x85', u'\x2028', char16_t(0xd800)})
    EXPECT_FALSE(isNotificationName(u"a"_s + QChar(bad) + u"b"_s)) << int(bad);
}

}  // namespace
}  // namespace quillo
