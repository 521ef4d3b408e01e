#include "platform/desktop/qt_url_opener.h"

#include <QByteArray>
#include <QDesktopServices>
#include <QUrl>

namespace dunmere {

bool QtUrlOpener::open(const std::string& url) {
  const QUrl parsed = QUrl::fromEncoded(QByteArray::fromStdString(url), QUrl::StrictMode);
  if (!parsed.isValid() || parsed.scheme().isEmpty()) return false;
  if (parsed.scheme() == QLatin1String("x-apple.systempreferences")) return false;
  return QDesktopServices::openUrl(parsed);
}

}  // namespace dunmere
