// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_resource_bundle.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <utility>

namespace halvora {

QtResourceBundle::QtResourceBundle(QString folder, std::string identifier,
                                   const std::vector<std::string>& languages,
                                   const JsonReader& json)
    : folder_(std::move(folder)),
      identifier_(std::move(identifier)),
      strings_(stringTableOf(*this, languages, json)) {}

std::optional<std::string> QtResourceBundle::readResource(std::string_view path,
                                                          std::size_t limit) const {
  const QString name = folder_ + QLatin1Char('/') +
                       QString::fromUtf8(path.data(), static_cast<qsizetype>(path.size()));
  // A folder can be opened too, and is empty.
  if (!QFileInfo(name).isFile()) return std::nullopt;
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly) || file.size() > static_cast<qint64>(limit)) {
    return std::nullopt;
  }
  return file.readAll().toStdString();
}

std::string QtResourceBundle::localizedString(std::string_view key) const {
  return textIn(strings_, key);
}

}  // namespace halvora
