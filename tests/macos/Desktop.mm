// A library that is loaded before the application's own: what GNUstep lacks of Apple Events, and a
// desktop that the test drives and watches.
//
// It reads commands from standard input, one a line, and writes what the application asks of the
// desktop to standard output, each line with "@" before it, in order with the application's own.
// A command is the event to send as a JSON object, or "terminate"; "@done" follows each. Of an
// event with a member "watched", each look into it is written as well. The end of the input ends
// the application. CONNECT_TEST_LAUNCH_EVENT holds the event that launches it.
#import <AppKit/AppKit.h>
#include <objc/runtime.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

namespace {

void record(NSString* line) {
  const std::string text = std::string("@") + line.UTF8String + "\n";
  [[maybe_unused]] const ssize_t ignored = write(STDOUT_FILENO, text.data(), text.size());
}

NSString* codeText(uint32_t code) {
  return [NSString stringWithFormat:@"%c%c%c%c", static_cast<char>(code >> 24U),
                                    static_cast<char>(code >> 16U), static_cast<char>(code >> 8U),
                                    static_cast<char>(code)];
}

/// Exchanges a method for the one of the same class that has "recorded_" before its name.
void watch(Class watched, SEL selector) {
  SEL replacement =
      NSSelectorFromString([@"recorded_" stringByAppendingString:NSStringFromSelector(selector)]);
  method_exchangeImplementations(class_getInstanceMethod(watched, selector),
                                 class_getInstanceMethod(watched, replacement));
}

/// The names of the delegate's methods, in the order in which the binary holds them.
NSString* methodNames(id object) {
  NSMutableArray* names = [NSMutableArray array];
  unsigned count = 0;
  Method* methods = class_copyMethodList([object class], &count);
  for (unsigned i = 0; i < count; ++i) {
    [names addObject:NSStringFromSelector(method_getName(methods[i]))];
  }
  free(methods);
  return [names componentsJoinedByString:@" "];
}

}  // namespace

/// A parameter, or an event that has at most one.
@interface TestDescriptor : NSAppleEventDescriptor {
  NSDictionary* content_;
}
- (instancetype)initWithContent:(NSDictionary*)content;
@end

@implementation TestDescriptor

- (instancetype)initWithContent:(NSDictionary*)content {
  self = [super init];
  content_ = [content retain];
  return self;
}

- (void)dealloc {
  [content_ release];
  [super dealloc];
}

- (NSAppleEventDescriptor*)paramDescriptorForKeyword:(uint32_t)keyword {
  if ([content_ objectForKey:@"watched"]) {
    record([@"asked for " stringByAppendingString:codeText(keyword)]);
  }
  NSDictionary* parameter = [content_ objectForKey:codeText(keyword)];
  return parameter ? [[[TestDescriptor alloc] initWithContent:parameter] autorelease] : nil;
}

- (NSString*)stringValue {
  return [content_ objectForKey:@"text"];
}

@end

static id gHandler = nil;
static SEL gSelector = nullptr;

@implementation NSAppleEventManager (ConnectTest)

+ (NSAppleEventManager*)sharedAppleEventManager {
  static NSAppleEventManager* manager = [[NSAppleEventManager alloc] init];
  return manager;
}

- (void)setEventHandler:(id)handler
            andSelector:(SEL)selector
          forEventClass:(uint32_t)eventClass
             andEventID:(uint32_t)eventId {
  gHandler = handler;
  gSelector = selector;
  record([NSString stringWithFormat:@"set handler %@ %@ %@ %@", codeText(eventClass),
                                    codeText(eventId), [handler class],
                                    NSStringFromSelector(selector)]);
}

- (void)removeEventHandlerForEventClass:(uint32_t)eventClass andEventID:(uint32_t)eventId {
  gHandler = nil;
  record(
      [NSString stringWithFormat:@"remove handler %@ %@", codeText(eventClass), codeText(eventId)]);
}

@end

@implementation NSUserDefaults (ConnectTest)

/// A setting is managed when CONNECT_TEST_MANAGED names it.
- (BOOL)objectIsForcedForKey:(NSString*)key {
  NSDictionary* environment = [NSProcessInfo processInfo].environment;
  return [key isEqualToString:[environment objectForKey:@"CONNECT_TEST_MANAGED"]];
}

@end

@implementation NSWorkspace (ConnectTest)

- (BOOL)recorded_openURL:(NSURL*)url {
  record([@"open " stringByAppendingString:url.absoluteString]);
  return YES;
}

@end

@implementation NSApplication (ConnectTest)

- (void)recorded_terminate:(id)sender {
  record([NSString stringWithFormat:@"terminate, sender %@", [sender class]]);
  [self recorded_terminate:sender];
}

@end

/// GNUstep's own, to which it hands the arguments that it takes for files.
@interface GSServicesManager : NSObject
@end

@implementation GSServicesManager (ConnectTest)

/// By AppKit's rule, which GNUstep does not know: a default that is the text "NO", and nothing
/// else, keeps arguments from being opened. What would be opened is not: it would ask in a dialog.
- (BOOL)recorded_application:(NSApplication*)application openFile:(NSString*)file {
  id open = [[NSUserDefaults standardUserDefaults] objectForKey:@"NSTreatUnknownArgumentsAsOpen"];
  record([NSString stringWithFormat:@"%@ %@", [open isEqual:@"NO"] ? @"pass over" : @"open file",
                                    file.lastPathComponent]);
  return YES;
}

@end

/// Sends one event; {} has no parameter, and null stands for no event at all.
static void sendEvent(NSString* json) {
  id content = nil;
  if (![json isEqualToString:@"null"]) {
    content = [NSJSONSerialization JSONObjectWithData:[json dataUsingEncoding:NSUTF8StringEncoding]
                                              options:0
                                                error:nullptr];
  }
  id event = content ? [[[TestDescriptor alloc] initWithContent:content] autorelease] : nil;
  id reply = [[[TestDescriptor alloc] initWithContent:@{}] autorelease];
  [gHandler performSelector:gSelector withObject:event withObject:reply];
}

@interface TestDesktop : NSObject {
  NSMutableString* input_;
}
@end

@implementation TestDesktop

+ (void)load {
  // First: GNUstep may run a shell while it starts, which would load this library and run a shell.
  unsetenv("LD_PRELOAD");
  @autoreleasepool {
    watch([NSApplication class], @selector(terminate:));
    watch([NSWorkspace class], @selector(openURL:));
    watch([GSServicesManager class], @selector(application:openFile:));
    watch([NSNotificationCenter class], @selector(postNotificationName:object:userInfo:));
  }
}

/// The application is about to be told that it was launched.
+ (void)launch {
  id delegate = [NSApp delegate];
  record([@"methods " stringByAppendingString:methodNames(delegate)]);
  record([NSString stringWithFormat:@"window %@", [[delegate window] isVisible] ? @"shown"
                                                  : [delegate window]           ? @"hidden"
                                                                                : @"missing"]);
  NSString* event =
      [[NSProcessInfo processInfo].environment objectForKey:@"CONNECT_TEST_LAUNCH_EVENT"];
  if (event) sendEvent(event);
  [[[TestDesktop alloc] init] readCommands];
}

- (void)readCommands {
  input_ = [[NSMutableString alloc] init];
  NSFileHandle* handle = [NSFileHandle fileHandleWithStandardInput];
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(commandsArrived:)
                                               name:NSFileHandleReadCompletionNotification
                                             object:handle];
  [handle readInBackgroundAndNotify];
}

- (void)commandsArrived:(NSNotification*)notification {
  NSData* data = [notification.userInfo objectForKey:NSFileHandleNotificationDataItem];
  if (data.length == 0) return [NSApp terminate:nil];
  [input_ appendString:[[[NSString alloc] initWithData:data
                                              encoding:NSUTF8StringEncoding] autorelease]];
  for (NSRange end; (end = [input_ rangeOfString:@"\n"]).length > 0;) {
    NSString* command = [input_ substringToIndex:end.location];
    [input_ deleteCharactersInRange:NSMakeRange(0, end.location + 1)];
    if ([command isEqualToString:@"terminate"]) return [NSApp terminate:nil];
    sendEvent(command);
    record(@"done");
  }
  [notification.object readInBackgroundAndNotify];
}

@end

@implementation NSNotificationCenter (ConnectTest)

- (void)recorded_postNotificationName:(NSString*)name
                               object:(id)object
                             userInfo:(NSDictionary*)userInfo {
  if ([name isEqualToString:NSApplicationWillFinishLaunchingNotification]) {
    record(@"will finish launching");
  } else if ([name isEqualToString:NSApplicationDidFinishLaunchingNotification]) {
    [TestDesktop launch];
    record(@"did finish launching");
  }
  [self recorded_postNotificationName:name object:object userInfo:userInfo];
}

@end
