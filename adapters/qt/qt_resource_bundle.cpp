// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_resource_bundle.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <utility>

#include "adapters/standard/file_names.h"

namespace halvora {

QtResourceBundle::QtResourceBundle(QString folder, std::string identifier,
                                   const std::vector<std::string>& languages,
                                   const JsonReader& json)
    : folder_(std::move(folder)),
      identifier_(std::move(identifier)),
      strings_(stringTableOf(*this, languages, json)) {}

std::optional<std::string> QtResourceBundle::readResource(std::string_view path,
                                                          std::size_t limit) const {
  const QString name = nameOf(path);
  // A folder can be opened too, and is empty.
  if (!QFileInfo(name).isFile()) return std::nullopt;
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly) || file.size() > static_cast<qint64>(limit)) {
    return std::nullopt;
  }
  return file.readAll().toStdString();
}

std::optional<FileAttributes> QtResourceBundle::attributes(std::string_view path) const {
  const QFileInfo found(nameOf(path));
  if (!found.exists()) return std::nullopt;
  const QDateTime time = found.lastModified();
  return FileAttributes{
      .isFolder = found.isDir(),
      .size = found.isDir() ? 0 : static_cast<std::uint64_t>(found.size()),
      .modifiedAt = time.isValid() ? static_cast<double>(time.toMSecsSinceEpoch()) / 1000 : 0};
}

std::optional<std::vector<std::string>> QtResourceBundle::list(std::string_view folder) const {
  const QDir found(nameOf(folder));
  if (!found.exists()) return std::nullopt;
  std::vector<std::string> names;
  for (const QString& name : found.entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
    names.push_back(name.toStdString());
  }
  std::ranges::sort(names, isListedBefore);
  return names;
}

std::string QtResourceBundle::location(std::string_view path) const {
  return nameOf(path).toStdString();
}

QString QtResourceBundle::nameOf(std::string_view path) const {
  return folder_ + QLatin1Char('/') +
         QString::fromUtf8(path.data(), static_cast<qsizetype>(path.size()));
}

std::string QtResourceBundle::localizedString(std::string_view key) const {
  return textIn(strings_, key);
}

}  // namespace halvora
