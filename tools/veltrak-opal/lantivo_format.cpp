#include "lantivo_format.h"

#include <algorithm>

#include "drive_access.h"

namespace veltrak_opal::lantivo {

std::string Describe(const opal::BooleanExpr& expr) {
  std::string text;
  for (const opal::AceTerm& term : expr) {
    if (!text.empty()) text += " ";
    if (!term.isOperator) {
      text += AuthorityName(term.authority);
    } else {
      text += term.op == opal::BooleanOp::kAnd ? "AND" : term.op == opal::BooleanOp::kOr ? "OR" : "NOT";
    }
  }
  return text.empty() ? "(empty)" : text;
}

opal::BooleanExpr Granted(const std::vector<opal::Uid>& listed, const std::vector<opal::Uid>& added) {
  std::vector<opal::Uid> members = {opal::kAdmins};
  for (const std::vector<opal::Uid>* group : {&listed, &added}) {
    for (opal::Uid authority : *group) {
      if (std::find(members.begin(), members.end(), authority) == members.end()) members.push_back(authority);
    }
  }
  return opal::AnyOf(members);
}

std::string AccessLine(unsigned range, const opal::BooleanExpr& readLock, const opal::BooleanExpr& writeLock) {
  std::vector<opal::Uid> named;
  for (const opal::BooleanExpr* expr : {&readLock, &writeLock}) {
    for (const opal::AceTerm& term : *expr) {
      if (!term.isOperator && term.authority != opal::kAdmins && term.authority != opal::kAdmin1) {
        named.push_back(term.authority);
      }
    }
  }
  std::sort(named.begin(), named.end());
  named.erase(std::unique(named.begin(), named.end()), named.end());
  std::string line = "Admin1";
  for (opal::Uid authority : named) line += " " + AuthorityName(authority);
  return line + " can access Locking Range " + std::to_string(range);
}

std::string UserStatusLine(unsigned user, bool enabled) {
  return "User" + std::to_string(user) + " : " + (enabled ? "Enabled" : "Disabled");
}

}  // namespace veltrak_opal::lantivo
