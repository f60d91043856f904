// The TCG token stream: atoms (integers and byte strings in tiny, short,
// medium and long form) and control tokens (lists, names, calls, end of data
// and of session). Encoding writes the shortest form of each atom; decoding
// is strict and bounded: a malformed stream gives an Error, never a read
// past the buffer, and nesting deeper than kMaxDepth is refused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "result.h"

namespace opal {

using Bytes = std::vector<uint8_t>;
// A UID or method ID: 8 bytes on the wire, big-endian here.
using Uid = uint64_t;

enum class Control : uint8_t {
  kStartList = 0xF0,
  kEndList = 0xF1,
  kStartName = 0xF2,
  kEndName = 0xF3,
  kCall = 0xF8,
  kEndOfData = 0xF9,
  kEndOfSession = 0xFA,
  kStartTransaction = 0xFB,
  kEndTransaction = 0xFC,
  kEmpty = 0xFF,
};

// A decoded value: an atom, a list of values, or a name with its value.
class Value {
 public:
  enum class Kind { kUnsigned, kSigned, kBytes, kList, kName };

  Value() = default;
  static Value UInt(uint64_t number);
  static Value Int(int64_t number);
  static Value Blob(Bytes bytes);
  static Value Text(std::string_view text);
  // A UID as its 8-byte string.
  static Value Ref(Uid uid);
  static Value List(std::vector<Value> items);
  static Value Name(Value name, Value value);
  // The common name form: an unsigned integer naming a parameter or column.
  static Value Named(uint64_t name, Value value);
  static Value Bool(bool flag) { return UInt(flag ? 1 : 0); }
  // The same values in the wider atom forms drives are known to receive
  // from existing hosts: a password as a medium atom, a pre-boot image chunk
  // as a long one, a parameter name in exactly width bytes.
  static Value MediumBlob(Bytes bytes);
  static Value LongBlob(Bytes bytes);
  static Value UIntOfWidth(uint64_t number, uint8_t width);

  Kind kind() const { return kind_; }
  bool IsUInt() const { return kind_ == Kind::kUnsigned; }
  bool IsBytes() const { return kind_ == Kind::kBytes; }
  bool IsList() const { return kind_ == Kind::kList; }
  bool IsName() const { return kind_ == Kind::kName; }

  // Accessors; each is meaningful only for its kind (0 or empty otherwise).
  uint64_t uinteger() const { return uinteger_; }
  int64_t integer() const { return integer_; }
  const Bytes& bytes() const { return bytes_; }
  std::string text() const { return std::string(bytes_.begin(), bytes_.end()); }
  // List items; for a name, its two parts.
  const std::vector<Value>& items() const { return items_; }
  const Value& name() const { return items_.at(0); }
  const Value& value() const { return items_.at(1); }
  // The UID held by an 8-byte string; false for anything else.
  bool AsUid(Uid& uid) const;

  // The atom form asked for (kShortest unless made by one of the above).
  enum class Form : uint8_t { kShortest, kMedium, kLong, kWidth };
  Form form() const { return form_; }
  uint8_t width() const { return width_; }

  // Values compare by content; the atom form is not part of it.
  bool operator==(const Value& other) const;
  bool operator!=(const Value& other) const { return !(*this == other); }

 private:
  Kind kind_ = Kind::kUnsigned;
  Form form_ = Form::kShortest;
  uint8_t width_ = 0;
  uint64_t uinteger_ = 0;
  int64_t integer_ = 0;
  Bytes bytes_;
  std::vector<Value> items_;
};

// Appends tokens to a byte buffer.
class Encoder {
 public:
  Encoder& UInt(uint64_t number);
  // number in a short atom of exactly width (1..8) bytes.
  Encoder& UIntOfWidth(uint64_t number, uint8_t width);
  Encoder& Int(int64_t number);
  Encoder& Blob(const uint8_t* data, size_t size);
  Encoder& Blob(const Bytes& bytes) { return Blob(bytes.data(), bytes.size()); }
  // A byte string in a medium atom (below 2048 bytes) or a long one.
  Encoder& MediumBlob(const Bytes& bytes);
  Encoder& LongBlob(const Bytes& bytes);
  Encoder& Ref(Uid uid);
  Encoder& Token(Control control);
  Encoder& Put(const Value& value);
  const Bytes& bytes() const { return bytes_; }

 private:
  void BlobHeader(size_t size);
  void MediumHeader(size_t size);
  void LongHeader(size_t size);
  Bytes bytes_;
};

// One item of a payload's top level: a control token that stands outside any
// list (call, end of data, end of session, transactions) or a value.
struct Item {
  bool isControl = false;
  Control control = Control::kEmpty;
  Value value;
};

// How deep lists and names may nest before a stream is refused.
constexpr size_t kMaxDepth = 32;

// Decodes a token payload into its top-level items. Empty atoms are skipped.
Result<std::vector<Item>> Decode(const uint8_t* data, size_t size);
inline Result<std::vector<Item>> Decode(const Bytes& payload) { return Decode(payload.data(), payload.size()); }

// Encodes a value alone (tests and state files).
Bytes Encode(const Value& value);

// A value in words, for messages and listings: 5, 0x1F2E (8-byte strings as
// UIDs), "text" for printable strings, [a, b], name=value.
std::string Describe(const Value& value);

}  // namespace opal
