#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

namespace voxtrel {

/// The text as Foundation wants it. Bytes that are not UTF-8 become U+FFFD, so the result is never nil.
NSString* toNSString(std::string_view utf8);

/// The text in UTF-8; empty for nil.
std::string toString(NSString* text);

/// What the user is told about a failed call; never empty.
std::string describe(NSError* error);

}  // namespace voxtrel
