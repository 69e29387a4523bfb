#import "voxtrel/platform/macos/foundation/Strings.h"

namespace voxtrel {
namespace {

NSString* fromBytes(const char* bytes, std::size_t count) {
  return [[NSString alloc] initWithBytes:bytes length:count encoding:NSUTF8StringEncoding];
}

/// Keeps every character that stands by itself in UTF-8.
NSString* repaired(std::string_view text) {
  constexpr std::size_t kMaxLength = 4;
  NSMutableString* result = [NSMutableString string];
  while (!text.empty()) {
    NSString* character = nil;
    std::size_t length = 0;
    while (character == nil && length < kMaxLength && length < text.size()) {
      character = fromBytes(text.data(), ++length);
    }
    [result appendString:character == nil ? @"\uFFFD" : character];
    text.remove_prefix(character == nil ? 1 : length);
  }
  return result;
}

}  // namespace

NSString* toNSString(std::string_view utf8) {
  NSString* text = fromBytes(utf8.data(), utf8.size());
  return text == nil ? repaired(utf8) : text;
}

std::string toString(NSString* text) {
  const char* utf8 = text.UTF8String;
  return utf8 == nullptr ? "" : utf8;
}

std::string describe(NSError* error) {
  const std::string text = toString(error.localizedDescription);
  if (!text.empty()) return text;
  return error == nil ? "unknown error" : toString(error.domain) + " " + std::to_string(error.code);
}

}  // namespace voxtrel
