#include "ace.h"

#include <algorithm>

namespace opal {

namespace {

Value HalfUid(uint32_t half) {
  return Value::Blob({static_cast<uint8_t>(half >> 24), static_cast<uint8_t>(half >> 16),
                      static_cast<uint8_t>(half >> 8), static_cast<uint8_t>(half)});
}

}  // namespace

Value EncodeBooleanExpr(const BooleanExpr& expr) {
  std::vector<Value> items;
  for (const AceTerm& term : expr) {
    items.push_back(term.isOperator
                        ? Value::Name(HalfUid(kHalfUidBooleanAce), Value::UInt(static_cast<uint8_t>(term.op)))
                        : Value::Name(HalfUid(kHalfUidAuthorityObjectRef), Value::Ref(term.authority)));
  }
  return Value::List(std::move(items));
}

Result<BooleanExpr> DecodeBooleanExpr(const Value& value) {
  if (!value.IsList()) return Fail("BooleanExpr is not a list");
  BooleanExpr expr;
  for (const Value& item : value.items()) {
    Uid authority = 0;
    if (!item.IsName()) return Fail("BooleanExpr item is not a name");
    if (item.name() == HalfUid(kHalfUidAuthorityObjectRef) && item.value().AsUid(authority)) {
      expr.push_back(AceTerm::Authority(authority));
    } else if (item.name() == HalfUid(kHalfUidBooleanAce) && item.value().IsUInt() && item.value().uinteger() <= 2) {
      expr.push_back(AceTerm::Operator(static_cast<BooleanOp>(item.value().uinteger())));
    } else {
      return Fail("BooleanExpr item is neither an authority nor an operator");
    }
  }
  return expr;
}

BooleanExpr AnyOf(const std::vector<Uid>& authorities) {
  BooleanExpr expr;
  for (size_t i = 0; i < authorities.size(); ++i) {
    expr.push_back(AceTerm::Authority(authorities[i]));
    if (i > 0) expr.push_back(AceTerm::Operator(BooleanOp::kOr));
  }
  return expr;
}

Result<std::vector<Uid>> AuthoritiesOfAnyOf(const BooleanExpr& expr) {
  std::vector<Uid> authorities;
  size_t depth = 0;
  for (const AceTerm& term : expr) {
    if (!term.isOperator) {
      if (std::find(authorities.begin(), authorities.end(), term.authority) == authorities.end()) {
        authorities.push_back(term.authority);
      }
      ++depth;
    } else if (term.op == BooleanOp::kOr && depth >= 2) {
      --depth;
    } else {
      return Fail("the access expression is not a plain list of alternatives");
    }
  }
  if (depth > 1) return Fail("the access expression leaves operands without an operator");
  return authorities;
}

}  // namespace opal
