// Declarations of Accelerate, and of exceptions, which AVAudioEngine raises.
#pragma once

#import <Accelerate/Accelerate.h>
#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

extern "C" void vDSP_zvabs(const DSPSplitComplex* values, vDSP_Stride step, float* results,
                           vDSP_Stride resultStep, vDSP_Length count);
extern "C" void vDSP_meanv(const float* values, vDSP_Stride step, float* mean, vDSP_Length count);

@interface NSException : NSObject
@property (nullable, readonly, copy) NSString* reason;
@end

NS_ASSUME_NONNULL_END
