// Declarations of Foundation that the type check needs beyond the folder's own. Headers of this folder are
// read before every source; each imports what it extends.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NSString* NSRunLoopMode;
FOUNDATION_EXPORT NSRunLoopMode const NSDefaultRunLoopMode;
FOUNDATION_EXPORT NSRunLoopMode const NSRunLoopCommonModes;

@interface NSTimer : NSObject
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer* timer))block;
- (void)invalidate;
@end

@interface NSRunLoop : NSObject
@property (class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
@end

@interface NSObject (ThreadPerforming)
- (void)performSelectorOnMainThread:(SEL)selector
                         withObject:(nullable id)argument
                      waitUntilDone:(BOOL)wait
                              modes:(nullable NSArray<NSString*>*)modes;
@end

@interface NSMutableString : NSString
+ (instancetype)string;
- (void)appendString:(NSString*)text;
@end

@interface NSString (Paths)
@property (readonly, copy) NSString* stringByResolvingSymlinksInPath;
@end

@interface NSUUID : NSObject
+ (instancetype)UUID;
@property (readonly, copy) NSString* UUIDString;
@end

@interface NSBundle (Executables)
@property (nullable, readonly, copy) NSString* executablePath;
- (nullable NSString*)pathForAuxiliaryExecutable:(NSString*)name;
- (BOOL)load;
- (nullable Class)classNamed:(NSString*)name;
+ (nullable instancetype)bundleWithPath:(NSString*)path;
@property (nullable, readonly, copy) NSString* privateFrameworksPath;
@end

NS_ASSUME_NONNULL_END
