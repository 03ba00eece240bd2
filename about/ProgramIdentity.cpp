#include "about/ProgramIdentity.h"

#include "about/ProductInformation.h"

namespace quillo {

using namespace Qt::StringLiterals;

Bundle programBundle(const QString& identifier, const QString& version) {
  return {u":/quillo"_s,
          {{InfoKey::identifier, identifier},
           {InfoKey::name, u"Quillo"_s},
           {InfoKey::shortVersion, version},
           {InfoKey::version, version},
           {InfoKey::copyright, QString(ProductInformation::copyright)}}};
}

QIcon programIcon(int largest) {
  QIcon icon;
  for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
    if (size <= largest)
      icon.addFile(u":/quillo/icons/hicolor/%1x%1/apps/quillo-agent.png"_s.arg(size), QSize(size, size));
  return icon;
}

}  // namespace quillo
