#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>

#include "app/AppDelegate.h"

namespace Vastel_Connect {

/// A get-URL Apple Event in the program's own form. It holds the text that the event lends out.
class ReceivedUriEvent {
 public:
  explicit ReceivedUriEvent(NSAppleEventDescriptor* descriptor);
  ReceivedUriEvent(const ReceivedUriEvent&) = delete;
  ReceivedUriEvent& operator=(const ReceivedUriEvent&) = delete;

  /// Null when there was no event.
  [[nodiscard]] const UriEvent* event() const { return event_ ? &*event_ : nullptr; }

 private:
  std::optional<std::string> text_;
  std::optional<UriEvent> event_;
};

}  // namespace Vastel_Connect
