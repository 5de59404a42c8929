#import "platform/macos/UriEvent.h"

#import "platform/macos/Text.h"

namespace Vastel_Connect {

ReceivedUriEvent::ReceivedUriEvent(NSAppleEventDescriptor* descriptor) {
  if (descriptor == nil) return;
  event_.emplace();
  NSAppleEventDescriptor* parameter = [descriptor paramDescriptorForKeyword:keyDirectObject];
  if (parameter == nil) return;
  text_ = utf8Text(parameter.stringValue);
  event_->parameter = {.keyword = keyDirectObject, .stringValue = text_};
}

}  // namespace Vastel_Connect
