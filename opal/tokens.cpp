#include "tokens.h"

#include <cstdio>

namespace opal {

Value Value::UInt(uint64_t number) {
  Value v;
  v.kind_ = Kind::kUnsigned;
  v.uinteger_ = number;
  return v;
}

Value Value::Int(int64_t number) {
  Value v;
  v.kind_ = Kind::kSigned;
  v.integer_ = number;
  return v;
}

Value Value::Blob(Bytes bytes) {
  Value v;
  v.kind_ = Kind::kBytes;
  v.bytes_ = std::move(bytes);
  return v;
}

Value Value::MediumBlob(Bytes bytes) {
  Value v = Blob(std::move(bytes));
  if (v.bytes_.size() < 2048) v.form_ = Form::kMedium;
  return v;
}

Value Value::LongBlob(Bytes bytes) {
  Value v = Blob(std::move(bytes));
  v.form_ = Form::kLong;
  return v;
}

Value Value::UIntOfWidth(uint64_t number, uint8_t width) {
  Value v = UInt(number);
  if (width >= 1 && width <= 8 && (width == 8 || number >> (8 * width) == 0)) {
    v.form_ = Form::kWidth;
    v.width_ = width;
  }
  return v;
}

Value Value::Text(std::string_view text) { return Blob(Bytes(text.begin(), text.end())); }

Value Value::Ref(Uid uid) {
  Bytes bytes(8);
  for (int i = 7; i >= 0; --i, uid >>= 8) bytes[i] = static_cast<uint8_t>(uid);
  return Blob(std::move(bytes));
}

Value Value::List(std::vector<Value> items) {
  Value v;
  v.kind_ = Kind::kList;
  v.items_ = std::move(items);
  return v;
}

Value Value::Name(Value name, Value value) {
  Value v;
  v.kind_ = Kind::kName;
  v.items_ = {std::move(name), std::move(value)};
  return v;
}

Value Value::Named(uint64_t name, Value value) { return Name(UInt(name), std::move(value)); }

bool Value::AsUid(Uid& uid) const {
  if (kind_ != Kind::kBytes || bytes_.size() != 8) return false;
  uid = 0;
  for (uint8_t b : bytes_) uid = uid << 8 | b;
  return true;
}

bool Value::operator==(const Value& other) const {
  if (kind_ != other.kind_) return false;
  switch (kind_) {
    case Kind::kUnsigned:
      return uinteger_ == other.uinteger_;
    case Kind::kSigned:
      return integer_ == other.integer_;
    case Kind::kBytes:
      return bytes_ == other.bytes_;
    case Kind::kList:
    case Kind::kName:
      return items_ == other.items_;
  }
  return false;
}

// --- Encoding -----------------------------------------------------------------

namespace {

// Bytes needed for an unsigned number in a short atom: 1, 2, 4 or 8, the
// widths that clients conventionally write.
size_t UnsignedWidth(uint64_t number) {
  if (number <= 0xFF) return 1;
  if (number <= 0xFFFF) return 2;
  if (number <= 0xFFFFFFFF) return 4;
  return 8;
}

size_t SignedWidth(int64_t number) {
  if (number >= INT8_MIN && number <= INT8_MAX) return 1;
  if (number >= INT16_MIN && number <= INT16_MAX) return 2;
  if (number >= INT32_MIN && number <= INT32_MAX) return 4;
  return 8;
}

void PutBigEndian(Bytes& out, uint64_t number, size_t width) {
  for (size_t i = width; i > 0; --i) out.push_back(static_cast<uint8_t>(number >> (8 * (i - 1))));
}

}  // namespace

Encoder& Encoder::UInt(uint64_t number) {
  if (number < 64) {
    bytes_.push_back(static_cast<uint8_t>(number));
  } else {
    const size_t width = UnsignedWidth(number);
    bytes_.push_back(static_cast<uint8_t>(0x80 | width));
    PutBigEndian(bytes_, number, width);
  }
  return *this;
}

Encoder& Encoder::UIntOfWidth(uint64_t number, uint8_t width) {
  bytes_.push_back(static_cast<uint8_t>(0x80 | width));
  PutBigEndian(bytes_, number, width);
  return *this;
}

Encoder& Encoder::Int(int64_t number) {
  if (number >= -32 && number <= 31) {
    bytes_.push_back(static_cast<uint8_t>(0x40 | (static_cast<uint64_t>(number) & 0x3F)));
  } else {
    const size_t width = SignedWidth(number);
    bytes_.push_back(static_cast<uint8_t>(0x90 | width));
    PutBigEndian(bytes_, static_cast<uint64_t>(number), width);
  }
  return *this;
}

// The atom header of a byte string: short below 16 bytes, medium below 2048,
// long beyond.
void Encoder::BlobHeader(size_t size) {
  if (size < 16) {
    bytes_.push_back(static_cast<uint8_t>(0xA0 | size));
  } else if (size < 2048) {
    MediumHeader(size);
  } else {
    LongHeader(size);
  }
}

void Encoder::MediumHeader(size_t size) {
  bytes_.push_back(static_cast<uint8_t>(0xD0 | (size >> 8)));
  bytes_.push_back(static_cast<uint8_t>(size & 0xFF));
}

void Encoder::LongHeader(size_t size) {
  bytes_.push_back(0xE2);
  PutBigEndian(bytes_, size, 3);
}

Encoder& Encoder::MediumBlob(const Bytes& bytes) {
  if (bytes.size() >= 2048) return Blob(bytes);
  MediumHeader(bytes.size());
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

Encoder& Encoder::LongBlob(const Bytes& bytes) {
  LongHeader(bytes.size());
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

Encoder& Encoder::Blob(const uint8_t* data, size_t size) {
  BlobHeader(size);
  bytes_.insert(bytes_.end(), data, data + size);
  return *this;
}

Encoder& Encoder::Ref(Uid uid) {
  bytes_.push_back(0xA8);
  PutBigEndian(bytes_, uid, 8);
  return *this;
}

Encoder& Encoder::Token(Control control) {
  bytes_.push_back(static_cast<uint8_t>(control));
  return *this;
}

Encoder& Encoder::Put(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::kUnsigned:
      if (value.form() == Value::Form::kWidth) return UIntOfWidth(value.uinteger(), value.width());
      return UInt(value.uinteger());
    case Value::Kind::kSigned:
      return Int(value.integer());
    case Value::Kind::kBytes:
      if (value.form() == Value::Form::kMedium) return MediumBlob(value.bytes());
      if (value.form() == Value::Form::kLong) return LongBlob(value.bytes());
      return Blob(value.bytes());
    case Value::Kind::kList:
      Token(Control::kStartList);
      for (const Value& item : value.items()) Put(item);
      return Token(Control::kEndList);
    case Value::Kind::kName:
      Token(Control::kStartName);
      Put(value.name());
      Put(value.value());
      return Token(Control::kEndName);
  }
  return *this;
}

Bytes Encode(const Value& value) { return Encoder().Put(value).bytes(); }

// --- Decoding -----------------------------------------------------------------

namespace {

// One token as read from the stream: an atom's value or a control token.
struct Token {
  bool isControl = false;
  Control control = Control::kEmpty;
  Value value;
};

bool IsKnownControl(uint8_t byte) {
  switch (byte) {
    case 0xF0: case 0xF1: case 0xF2: case 0xF3: case 0xF8:
    case 0xF9: case 0xFA: case 0xFB: case 0xFC: case 0xFF:
      return true;
    default:
      return false;
  }
}

Result<Value> IntegerAtom(const uint8_t* data, size_t size, bool isSigned) {
  if (size > 8) return Fail("integer atom wider than 64 bits");
  uint64_t number = 0;
  for (size_t i = 0; i < size; ++i) number = number << 8 | data[i];
  if (!isSigned) return Value::UInt(number);
  if (size > 0 && size < 8 && (data[0] & 0x80)) number |= ~uint64_t{0} << (8 * size);
  return Value::Int(static_cast<int64_t>(number));
}

// Reads the token at pos and advances pos past it.
Result<Token> NextToken(const uint8_t* data, size_t size, size_t& pos) {
  const uint8_t first = data[pos++];
  Token token;
  if (first < 0x40) {
    token.value = Value::UInt(first);
    return token;
  }
  if (first < 0x80) {
    token.value = Value::Int(static_cast<int8_t>(static_cast<uint8_t>(first << 2)) >> 2);
    return token;
  }
  if (first >= 0xF0) {
    if (!IsKnownControl(first)) return Fail("reserved token byte");
    token.isControl = true;
    token.control = static_cast<Control>(first);
    return token;
  }
  size_t length = 0;
  bool isBytes = false, isSigned = false;
  if (first < 0xC0) {  // short: 10BSllll
    isBytes = first & 0x20;
    isSigned = first & 0x10;
    length = first & 0x0F;
  } else if (first < 0xE0) {  // medium: 110BSlll + 1 byte
    if (pos + 1 > size) return Fail("truncated medium atom header");
    isBytes = first & 0x10;
    isSigned = first & 0x08;
    length = (size_t{first & 0x07u} << 8) | data[pos++];
  } else if (first <= 0xE3) {  // long: 111000BS + 3 bytes
    if (pos + 3 > size) return Fail("truncated long atom header");
    isBytes = first & 0x02;
    isSigned = first & 0x01;
    length = size_t{data[pos]} << 16 | size_t{data[pos + 1]} << 8 | data[pos + 2];
    pos += 3;
  } else {
    return Fail("reserved atom header");
  }
  if (length > size - pos) return Fail("atom runs past the end of the data");
  const uint8_t* body = data + pos;
  pos += length;
  if (isBytes) {
    // The sign bit of a byte string marks a continued string; read alone it
    // is still a byte string.
    token.value = Value::Blob(Bytes(body, body + length));
    return token;
  }
  Result<Value> number = IntegerAtom(body, length, isSigned);
  if (!number) return number.error();
  token.value = std::move(*number);
  return token;
}

// A list or name under construction.
struct Frame {
  bool isName;
  std::vector<Value> items;
};

}  // namespace

Result<std::vector<Item>> Decode(const uint8_t* data, size_t size) {
  std::vector<Item> top;
  std::vector<Frame> open;
  auto append = [&](Value value) -> Status {
    if (open.empty()) {
      top.push_back(Item{false, Control::kEmpty, std::move(value)});
      return Ok();
    }
    Frame& frame = open.back();
    if (frame.isName && frame.items.size() == 2) return Fail("a name holds more than one value");
    frame.items.push_back(std::move(value));
    return Ok();
  };
  for (size_t pos = 0; pos < size;) {
    Result<Token> token = NextToken(data, size, pos);
    if (!token) return token.error();
    if (!token->isControl) {
      Status added = append(std::move(token->value));
      if (!added) return added.error();
      continue;
    }
    switch (token->control) {
      case Control::kEmpty:
        break;
      case Control::kStartList:
      case Control::kStartName:
        if (open.size() >= kMaxDepth) return Fail("lists nested too deep");
        open.push_back(Frame{token->control == Control::kStartName, {}});
        break;
      case Control::kEndList:
      case Control::kEndName: {
        const bool isName = token->control == Control::kEndName;
        if (open.empty() || open.back().isName != isName) return Fail("unbalanced list or name");
        Frame frame = std::move(open.back());
        open.pop_back();
        if (isName && frame.items.size() != 2) return Fail("a name without its value");
        Value value = isName ? Value::Name(std::move(frame.items[0]), std::move(frame.items[1]))
                             : Value::List(std::move(frame.items));
        Status added = append(std::move(value));
        if (!added) return added.error();
        break;
      }
      default:
        if (!open.empty()) return Fail("control token inside a list");
        top.push_back(Item{true, token->control, Value()});
    }
  }
  if (!open.empty()) return Fail("list or name not closed");
  return top;
}

std::string Describe(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::kUnsigned:
      return std::to_string(value.uinteger());
    case Value::Kind::kSigned:
      return std::to_string(value.integer());
    case Value::Kind::kBytes: {
      bool printable = !value.bytes().empty();
      for (uint8_t b : value.bytes()) printable = printable && b >= 0x20 && b < 0x7F;
      if (printable && value.bytes().size() != 8) return "\"" + value.text() + "\"";
      std::string hex = "0x";
      char digits[3];
      for (uint8_t b : value.bytes()) {
        std::snprintf(digits, sizeof digits, "%02X", b);
        hex += digits;
      }
      return hex;
    }
    case Value::Kind::kList: {
      std::string text = "[";
      for (size_t i = 0; i < value.items().size(); ++i) text += (i ? ", " : "") + Describe(value.items()[i]);
      return text + "]";
    }
    case Value::Kind::kName:
      return Describe(value.name()) + "=" + Describe(value.value());
  }
  return "";
}

}  // namespace opal
