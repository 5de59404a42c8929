// The application's delegate towards AppKit: each method is a call of the program's own delegate.
#import <AppKit/AppKit.h>

#include <csignal>

#include "app/AppDelegate.h"
#import "platform/macos/Text.h"

/// Made by the main interface file, and named there.
@interface AppDelegate : NSObject <NSApplicationDelegate> {
  __weak NSWindow* window_;
  Vastel_Connect::AppDelegate delegate_;
}
@property(nullable, weak) IBOutlet NSWindow* window;
@end

@implementation AppDelegate

/// What has to be in place before AppKit looks at the arguments, and is no part of any method of
/// the delegate's own.
+ (void)initialize {
  // AppKit would take "/help" for a file to open. It wants a text, and nobody's choice is touched.
  [[NSUserDefaults standardUserDefaults]
      registerDefaults:@{@"NSTreatUnknownArgumentsAsOpen" : @"NO"}];
  // A reader of the log who went away is an output error, which is ignored.
  std::signal(SIGPIPE, SIG_IGN);
}

- (NSWindow*)window {
  return window_;
}

- (void)setWindow:(NSWindow*)window {
  window_ = window;
}

- (void)applicationWillFinishLaunching:(NSNotification*)notification {
  delegate_.applicationWillFinishLaunching();
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  delegate_.applicationDidFinishLaunching();
}

- (void)applicationWillTerminate:(NSNotification*)notification {
  delegate_.applicationWillTerminate();
}

- (void)UriEventHandlerWithEvent:(NSAppleEventDescriptor*)event
                  withReplyEvent:(NSAppleEventDescriptor*)replyEvent {
  // No event and no parameter answer as nil does: with nothing.
  delegate_.UriEventHandlerWithEvent({[event](std::uint32_t keyword) {
    return Vastel_Connect::utf8Text([event paramDescriptorForKeyword:keyword].stringValue);
  }});
}

// The window and the flags begin empty and false: the runtime constructs them.
- (instancetype)init {
  return [super init];
}

// Nothing is restored, securely. Without an answer, newer systems complain on standard error.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application {
  return YES;
}

@end
