// An ACE's BooleanExpr: authorities and the operators AND, OR and NOT in
// postfix order, each item named by its 4-byte half-UID. Drives and clients
// read and write the same list shape.
#pragma once

#include <vector>

#include "tokens.h"
#include "uids.h"

namespace opal {

struct AceTerm {
  bool isOperator = false;
  Uid authority = 0;
  BooleanOp op = BooleanOp::kOr;

  static AceTerm Authority(Uid uid) { return AceTerm{false, uid, BooleanOp::kOr}; }
  static AceTerm Operator(BooleanOp op) { return AceTerm{true, 0, op}; }
  bool operator==(const AceTerm& other) const {
    return isOperator == other.isOperator && (isOperator ? op == other.op : authority == other.authority);
  }
};
using BooleanExpr = std::vector<AceTerm>;

Value EncodeBooleanExpr(const BooleanExpr& expr);
// Every item must be an authority reference or a known operator.
Result<BooleanExpr> DecodeBooleanExpr(const Value& value);

// a OR b OR c ...: the authorities in order, joined by OR.
BooleanExpr AnyOf(const std::vector<Uid>& authorities);
// The authorities of an expression made only of ORs (a single authority
// included); fails for AND, NOT or a malformed expression, which a caller
// cannot extend by adding names.
Result<std::vector<Uid>> AuthoritiesOfAnyOf(const BooleanExpr& expr);

}  // namespace opal
