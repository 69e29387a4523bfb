#import "support/macos/Symbols.h"

#import <objc/runtime.h>

#if defined(GNUSTEP)

namespace {

char nameKey;
char pointSizeKey;

using MakeImage = NSImage* (*)(id, SEL, NSString*, NSString*);
using Configure = NSImage* (*)(id, SEL, NSImageSymbolConfiguration*);
MakeImage makeRigImage;
Configure configureRigImage;

/// The system's symbols that the application names and the rig has no picture of.
NSString* drawnAs(NSString* name) {
  return [name isEqual:@"mic.badge.xmark"] ? @"mic.slash" : name;
}

NSImage* makeImage(id self, SEL selector, NSString* name, NSString* description) {
  NSImage* image = makeRigImage(self, selector, drawnAs(name), description);
  if (image != nil) objc_setAssociatedObject(image, &nameKey, name, OBJC_ASSOCIATION_COPY);
  return image;
}

NSImage* configure(id self, SEL selector, NSImageSymbolConfiguration* configuration) {
  NSImage* image = configureRigImage(self, selector, configuration);
  objc_setAssociatedObject(image, &nameKey, [self testSymbolName], OBJC_ASSOCIATION_COPY);
  objc_setAssociatedObject(image, &pointSizeKey, @(configuration.rigPointSize),
                           OBJC_ASSOCIATION_RETAIN);
  return image;
}

__attribute__((constructor)) void install() {
  Class images = objc_getClass("NSImage");
  const SEL make = sel_registerName("imageWithSystemSymbolName:accessibilityDescription:");
  makeRigImage = reinterpret_cast<MakeImage>(method_setImplementation(
      class_getClassMethod(images, make), reinterpret_cast<IMP>(makeImage)));
  const SEL configuring = sel_registerName("imageWithSymbolConfiguration:");
  configureRigImage = reinterpret_cast<Configure>(method_setImplementation(
      class_getInstanceMethod(images, configuring), reinterpret_cast<IMP>(configure)));
}

}  // namespace

#endif

@implementation NSImage (TestSymbols)

- (NSString*)testSymbolName {
#if defined(GNUSTEP)
  return objc_getAssociatedObject(self, &nameKey);
#else
  return nil;
#endif
}

- (CGFloat)testSymbolPointSize {
#if defined(GNUSTEP)
  return [objc_getAssociatedObject(self, &pointSizeKey) doubleValue];
#else
  return 0;
#endif
}

@end
