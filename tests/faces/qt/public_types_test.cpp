// SPDX-License-Identifier: Apache-2.0
// What a host may name of the QML module, as its tools read it from what is installed.
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlError>
#include <QString>
#include <QUrl>
#include <fstream>
#include <regex>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace halvora {
namespace {

using ::testing::EndsWith;
using ::testing::IsSupersetOf;
using ::testing::UnorderedElementsAre;

const std::string kModules = HALVORA_QML_MODULES;

/// The first group of a pattern, wherever it is in a file of the modules.
std::set<std::string> found(const std::string& file, const std::string& pattern) {
  std::set<std::string> all;
  std::ifstream lines(kModules + "/" + file);
  const std::regex regex(pattern);
  for (std::string line; std::getline(lines, line);) {
    for (std::sregex_iterator at(line.begin(), line.end(), regex), end; at != end; ++at) {
      all.insert((*at)[1]);
    }
  }
  return all;
}

/// The types that a module gives a name: its documents, and what it registers.
std::set<std::string> typesOf(const std::string& folder, const std::string& types,
                              const std::string& uri) {
  std::set<std::string> all =
      found(folder + "/qmldir", R"(^(?:singleton )?([A-Z]\w*) \d+\.\d+ \w+\.qml$)");
  all.merge(found(folder + "/" + types, "\"" + uri + R"(/(\w+) \d+\.\d+\")"));
  return all;
}

std::set<std::string> inner() {
  return typesOf("Halvora/impl", "halvora_qt_impl.qmltypes", "Halvora\\.impl");
}

TEST(PublicTypes, AreTheThreeViews) {
  EXPECT_THAT(typesOf("Halvora", "halvora_qt.qmltypes", "Halvora"),
              UnorderedElementsAre("HalvoraView", "HalvoraStatusView", "HalvoraAudienceView"));
}

TEST(PublicTypes, AreMadeOfOthersThatAreNamedElsewhere) {
  EXPECT_THAT(inner(), IsSupersetOf({"StatusPanel", "AudiencePanel", "StatusMetrics", "SeatPlan",
                                     "SheetCurtain", "StatusButton", "labelLook"}));
}

TEST(PublicTypes, NothingElseIsThereForAHost) {
  QQmlEngine qml;
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  for (const std::string& type : inner()) {
    if (type[0] >= 'a') continue;
    QQmlComponent component(&qml);
    component.setData(QByteArray::fromStdString("import Halvora\n" + type + " {}"), QUrl());
    EXPECT_NE(component.errorString().indexOf(QStringLiteral("is not a type")), -1)
        << type << ": " << component.errorString().toStdString();
  }
}

TEST(PublicTypes, OfAnotherVersionAreRefusedInOneSentence) {
  QQmlEngine qml;
  qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
  QQmlComponent component(&qml);
  component.setData("import Halvora 9.0\nHalvoraView {}", QUrl());
  ASSERT_EQ(component.errors().size(), 1);
  // Where the module is linked in, the first import says so of its plugin.
  EXPECT_THAT(component.errors()[0].description().toStdString(),
              EndsWith("module \"Halvora\" version 9.0 is not installed"));
}

}  // namespace
}  // namespace halvora
