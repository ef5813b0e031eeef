// SPDX-License-Identifier: Apache-2.0
#include "tests/faces/qt/access_tree.h"

#include <QObject>
#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace halvora {

namespace {

void addBelow(QAccessibleInterface* interface, AccessNodes& nodes) {
  if (interface == nullptr || !interface->isValid()) return;
  AccessNode node;
  node.interface = interface;
  node.objectName = interface->object() != nullptr ? interface->object()->objectName() : QString();
  node.name = interface->text(QAccessible::Name);
  node.role = interface->role();
  if (QAccessibleActionInterface* actions = interface->actionInterface()) {
    node.actions = actions->actionNames();
  }
  nodes.push_back(node);
  for (int child = 0; child < interface->childCount(); ++child) {
    addBelow(interface->child(child), nodes);
  }
}

template <class Is>
const AccessNode* firstSeen(const AccessNodes& nodes, Is is) {
  const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const AccessNode& node) {
    return node.isSeen() && is(node);
  });
  return found != nodes.end() ? &*found : nullptr;
}

// What a control of each role lets be done with it; nothing for what is only read.
QStringList needed(QAccessible::Role role) {
  switch (role) {
    case QAccessible::Button:
    case QAccessible::ListItem:
    case QAccessible::RadioButton:
      return {QAccessibleActionInterface::pressAction()};
    case QAccessible::CheckBox:
      return {QAccessibleActionInterface::toggleAction()};
    case QAccessible::List:
    case QAccessible::Slider:
    case QAccessible::SpinBox:
      return {QAccessibleActionInterface::increaseAction(),
              QAccessibleActionInterface::decreaseAction()};
    case QAccessible::EditableText:
      return {QAccessibleActionInterface::setFocusAction()};
    default:
      return {};
  }
}

}  // namespace

bool AccessNode::act(const QString& action) const {
  if (!actions.contains(action)) return false;
  interface->actionInterface()->doAction(action);
  return true;
}

AccessNodes accessTree(QWindow& window) {
  AccessNodes nodes;
  addBelow(QAccessible::queryAccessibleInterface(&window), nodes);
  return nodes;
}

const AccessNode* withName(const AccessNodes& nodes, const QString& name) {
  return firstSeen(nodes, [&](const AccessNode& node) { return node.name == name; });
}

const AccessNode* withObjectName(const AccessNodes& nodes, const QString& objectName) {
  return firstSeen(nodes, [&](const AccessNode& node) { return node.objectName == objectName; });
}

void expectSpeaking(const AccessNodes& nodes) {
  std::set<QAccessibleInterface*> met;
  for (const AccessNode& node : nodes) {
    const std::string what = node.objectName.toStdString();
    EXPECT_TRUE(met.insert(node.interface).second) << what << " is there twice";
    if (!node.isSeen() || node.role == QAccessible::Window) continue;
    const bool mayBeSilent =
        node.role == QAccessible::Animation || node.role == QAccessible::Notification;
    EXPECT_TRUE(mayBeSilent || !node.name.isEmpty()) << what << " has no name";
    EXPECT_NE(node.role, QAccessible::NoRole) << what;
    EXPECT_NE(node.role, QAccessible::Client) << what;
    for (const QString& action : needed(node.role)) {
      EXPECT_TRUE(node.actions.contains(action)) << what << " lacks " << action.toStdString();
    }
  }
}

}  // namespace halvora
