// Accessibility's trust check, as the rig's double has it. The rig has no CoreFoundation.
#pragma once

typedef unsigned char Boolean;
typedef const void* CFDictionaryRef;
typedef const void* CFStringRef;

extern "C" const CFStringRef kAXTrustedCheckOptionPrompt;
extern "C" Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options);
extern "C" Boolean AXIsProcessTrusted(void);
