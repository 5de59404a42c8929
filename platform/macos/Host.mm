// The functions of Platform.h over AppKit and Foundation.
#import <AppKit/AppKit.h>

#include <cstdlib>

#include "app/AppDelegate.h"
#include "platform/Platform.h"
#import "platform/macos/Text.h"
#include "text/SchemeList.h"
#include "text/UrlText.h"

namespace Vastel_Connect::platform {
namespace {

std::string dateText(NSString* pattern) {
  @autoreleasepool {
    // A new one each time: the zone may have changed, and no thread shares it.
    NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
    formatter.dateFormat = pattern;
    return utf8Text([formatter stringFromDate:[NSDate date]]).value_or("");
  }
}

/// Whether the administrator permits pages of a scheme, by the managed setting AllowedSchemes: an
/// array of texts. Without it all are permitted, and with one that is no array, none.
bool permitsPage(std::string_view scheme) {
  NSString* key = @"AllowedSchemes";
  NSUserDefaults* settings = [NSUserDefaults standardUserDefaults];
  // What the person sets does not count.
  if (![settings objectIsForcedForKey:key]) return true;
  for (id allowed in [settings arrayForKey:key]) {
    if (![allowed isKindOfClass:[NSString class]]) continue;
    if (listHasScheme(utf8Text(allowed).value_or(""), scheme)) return true;
  }
  NSLog(@"the scheme of a page is not permitted by %@: %@", key, foundationText(scheme));
  return false;
}

}  // namespace

std::vector<std::string> processArguments() {
  @autoreleasepool {
    std::vector<std::string> arguments;
    for (NSString* argument in [NSProcessInfo processInfo].arguments) {
      arguments.push_back(utf8Text(argument).value_or(""));
    }
    return arguments;
  }
}

void setUriEventHandler() {
  [[NSAppleEventManager sharedAppleEventManager]
      setEventHandler:[NSApplication sharedApplication].delegate
          andSelector:@selector(UriEventHandlerWithEvent:withReplyEvent:)
        forEventClass:kInternetEventClass
           andEventID:kAEGetURL];
}

void removeUriEventHandler() {
  [[NSAppleEventManager sharedAppleEventManager] removeEventHandlerForEventClass:kInternetEventClass
                                                                      andEventID:kAEGetURL];
}

void terminate() {
  NSApplication* application = [NSApplication sharedApplication];
  [application terminate:application.delegate];
}

bool isMainThread() {
  return [NSThread isMainThread];
}

std::string logTime() {
  return dateText(@"HH:mm:ss");
}

std::string jsonLogDate() {
  return dateText(@"yyyy-MM-dd'T'HH:mm:ssZ");
}

bool openUrl(std::string_view url) {
  @autoreleasepool {
    NSString* text = foundationText(url);
    NSURL* address = text == nil ? nil : [[NSURL alloc] initWithString:text];
    // A newer parser forms none of some texts that the check takes, as of "http://[".
    return address != nil && permitsPage(urlScheme(url)) &&
           [[NSWorkspace sharedWorkspace] openURL:address];
  }
}

void stopProgram() {
  std::_Exit(kStopStatus);
}

}  // namespace Vastel_Connect::platform
