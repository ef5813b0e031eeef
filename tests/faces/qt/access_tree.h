// SPDX-License-Identifier: Apache-2.0
// A window as assistive technology finds it: every object of its tree, from the window down, by
// what each says of itself. Objects are good until the window changes.
#pragma once

#include <QAccessible>
#include <QString>
#include <QStringList>
#include <QWindow>
#include <vector>

namespace halvora {

struct AccessNode {
  QAccessibleInterface* interface = nullptr;
  QString objectName;
  QString name;
  QAccessible::Role role = QAccessible::NoRole;
  QStringList actions;

  bool isSeen() const { return interface->state().invisible == 0; }
  bool is(QAccessible::Role wanted) const { return role == wanted && isSeen(); }
  bool act(const QString& action) const;
};

using AccessNodes = std::vector<AccessNode>;

AccessNodes accessTree(QWindow& window);
/// Null for none that is seen.
const AccessNode* withName(const AccessNodes& nodes, const QString& name);
const AccessNode* withObjectName(const AccessNodes& nodes, const QString& objectName);

/// Each object that is seen has a name, each control does something, and none is in the tree twice.
void expectSpeaking(const AccessNodes& nodes);

}  // namespace halvora
