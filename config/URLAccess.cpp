#include "config/URLAccess.h"

#include <QFile>

#include <unistd.h>

namespace quillo::URLAccess {

static bool accessible(const QUrl& url, int mode) {
  return url.isLocalFile() && !url.toLocalFile().isEmpty() &&
         ::access(QFile::encodeName(url.toLocalFile()).constData(), mode) == 0;
}

bool isReadable(const QUrl& url) {
  return accessible(url, R_OK);
}
bool isWritable(const QUrl& url) {
  return accessible(url, W_OK);
}

}  // namespace quillo::URLAccess
