// A second application, which LaunchServices knows for one scheme: it writes each link that it
// receives into the pipe CONNECT_TEST_PIPE of its property list.
#import <AppKit/AppKit.h>

#include <cstdio>

@interface Receiver : NSObject <NSApplicationDelegate>
@end

@implementation Receiver

- (void)application:(NSApplication*)application openURLs:(NSArray<NSURL*>*)urls {
  NSString* path = [NSBundle.mainBundle objectForInfoDictionaryKey:@"CONNECT_TEST_PIPE"];
  std::FILE* pipe = std::fopen(path.fileSystemRepresentation, "w");
  std::fprintf(pipe, "%s\n", urls.firstObject.absoluteString.UTF8String);
  std::fclose(pipe);
}

@end

int main() {
  // The application holds its delegate weakly.
  __attribute__((objc_precise_lifetime)) Receiver* receiver = [[Receiver alloc] init];
  NSApplication.sharedApplication.delegate = receiver;
  [NSApp run];
}
