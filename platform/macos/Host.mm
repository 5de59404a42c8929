// The functions of Platform.h over AppKit and Foundation.
#import <AppKit/AppKit.h>

#include "platform/Platform.h"
#import "platform/macos/Text.h"

namespace Vastel_Connect::platform {

std::vector<std::string> processArguments() {
  @autoreleasepool {
    std::vector<std::string> arguments;
    for (NSString* argument in [NSProcessInfo processInfo].arguments) {
      arguments.push_back(utf8Text(argument).value_or(""));
    }
    return arguments;
  }
}

void setUriEventHandler(AppDelegate& /*handler*/, std::uint32_t eventClass, std::uint32_t eventId) {
  // The delegate that AppKit knows holds the handler, and makes the event its own.
  [[NSAppleEventManager sharedAppleEventManager]
      setEventHandler:[NSApplication sharedApplication].delegate
          andSelector:@selector(UriEventHandlerWithEvent:withReplyEvent:)
        forEventClass:eventClass
           andEventID:eventId];
}

void removeUriEventHandler(std::uint32_t eventClass, std::uint32_t eventId) {
  [[NSAppleEventManager sharedAppleEventManager] removeEventHandlerForEventClass:eventClass
                                                                      andEventID:eventId];
}

void terminate() {
  NSApplication* application = [NSApplication sharedApplication];
  [application terminate:application.delegate];
}

bool isMainThread() {
  return [NSThread isMainThread];
}

std::string currentDateText(std::string_view pattern) {
  @autoreleasepool {
    // A new one each time: the zone may have changed, and no thread shares it.
    NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
    formatter.dateFormat = foundationText(pattern);
    return utf8Text([formatter stringFromDate:[NSDate date]]).value_or("");
  }
}

bool openUrl(std::string_view url) {
  @autoreleasepool {
    NSURL* address = [[NSURL alloc] initWithString:foundationText(url)];
    // Without a scheme nobody can open it, and a later system says so in a dialog of its own.
    if (address.scheme.length == 0) return false;
    return [[NSWorkspace sharedWorkspace] openURL:address];
  }
}

}  // namespace Vastel_Connect::platform
