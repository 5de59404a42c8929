#import <AppKit/AppKit.h>

int main(int argc, char** argv) {
  NSApplicationMain(argc, const_cast<const char**>(argv));
  return 0;
}
