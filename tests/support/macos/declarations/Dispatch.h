// Declarations of libdispatch: sources.
#pragma once

#import <Foundation/Foundation.h>

#define OS_OBJECT_USE_OBJC 1

NS_ASSUME_NONNULL_BEGIN

OBJC_EXTERN const stub_dispatch_source_type_s _dispatch_source_type_read;
#define DISPATCH_SOURCE_TYPE_READ (&_dispatch_source_type_read)
OBJC_EXTERN dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle,
                                                     uintptr_t mask,
                                                     dispatch_queue_t _Nullable queue)
    __attribute__((ns_returns_retained));
OBJC_EXTERN void dispatch_source_set_event_handler(dispatch_source_t source,
                                                   dispatch_block_t _Nullable handler);
OBJC_EXTERN void dispatch_source_cancel(dispatch_source_t source);
OBJC_EXTERN void dispatch_resume(NSObject<OS_dispatch_object>* object);
OBJC_EXTERN Class _Nullable NSClassFromString(NSString* name);

OBJC_EXTERN SEL NSSelectorFromString(NSString* name);

NS_ASSUME_NONNULL_END
