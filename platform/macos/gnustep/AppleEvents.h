// Included before each file of the host when it is built against GNUstep, whose headers and runtime
// lack what is here. It declares, and defines nothing: the binary holds no line of it.
#pragma once
#pragma clang system_header

#import <Foundation/Foundation.h>

// The runtime has no weak references. The outlet's window lives as long as the application.
#undef __weak
#define __weak

@interface NSAppleEventManager (ConnectDeclarations)
+ (NSAppleEventManager*)sharedAppleEventManager;
- (void)setEventHandler:(id)handler
            andSelector:(SEL)selector
          forEventClass:(uint32_t)eventClass
             andEventID:(uint32_t)eventId;
- (void)removeEventHandlerForEventClass:(uint32_t)eventClass andEventID:(uint32_t)eventId;
@end

@interface NSUserDefaults (ConnectDeclarations)
- (BOOL)objectIsForcedForKey:(NSString*)key;
@end

@interface NSAppleEventDescriptor (ConnectDeclarations)
@property(readonly, nullable) NSString* stringValue;
- (nullable NSAppleEventDescriptor*)paramDescriptorForKeyword:(uint32_t)keyword;
@end
