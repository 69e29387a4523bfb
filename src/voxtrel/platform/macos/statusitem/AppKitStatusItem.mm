#import "voxtrel/platform/macos/statusitem/AppKitStatusItem.h"

#include <utility>

#import "voxtrel/platform/macos/foundation/Strings.h"

/// The target of one menu row.
@interface VXMenuTarget : NSObject
- (instancetype)initWithAction:(std::function<void()>)action;
- (void)choose:(id)sender;
@end

@implementation VXMenuTarget {
  std::function<void()> _action;
}

- (instancetype)initWithAction:(std::function<void()>)action {
  self = [super init];
  if (self != nil) _action = std::move(action);
  return self;
}

- (void)choose:(id)__unused sender {
  const auto action = _action;  // the action may replace the menu, and with it this
  action();
}

@end

namespace voxtrel {

AppKitStatusItem::AppKitStatusItem(SystemActions systemActions)
    : systemActions_(std::move(systemActions)) {}

AppKitStatusItem::~AppKitStatusItem() {
  detachRows();
  if (item_ != nil) [NSStatusBar.systemStatusBar removeStatusItem:item_];
}

void AppKitStatusItem::provideItem() {
  if (item_ != nil) return;
  item_ = [NSStatusBar.systemStatusBar statusItemWithLength:NSSquareStatusItemLength];
}

/// A menu may live longer than the targets of its rows.
void AppKitStatusItem::detachRows() {
  for (std::size_t row = 0; row < titles_.size(); ++row) {
    NSMenuItem* item = [menu_ itemAtIndex:static_cast<NSInteger>(row)];
    item.target = nil;
    item.action = nullptr;
  }
}

void AppKitStatusItem::setMenu(std::vector<MenuItem> rows) {
  provideItem();
  detachRows();
  menu_ = [[NSMenu alloc] initWithTitle:@""];
  targets_ = [NSMutableArray array];
  titles_.clear();
  for (MenuItem& row : rows) {
    titles_.push_back(row.title);
    [menu_ addItem:row.separator ? [NSMenuItem separatorItem] : makeRow(std::move(row))];
  }
  item_.menu = menu_;
}

/// The menu enables a row if it has an action whose target agrees.
NSMenuItem* AppKitStatusItem::makeRow(MenuItem row) {
  NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:toNSString(row.title)
                                                action:nullptr
                                         keyEquivalent:toNSString(row.keyEquivalent)];
  if (!row.enabled) {
    item.enabled = NO;
    return item;
  }
  const auto known = systemActions_.find(row.systemAction);
  if (known != systemActions_.end()) {
    item.target = known->second.target;
    item.action = known->second.selector;
  } else if (row.action) {
    VXMenuTarget* target = [[VXMenuTarget alloc] initWithAction:std::move(row.action)];
    [targets_ addObject:target];
    item.target = target;
    item.action = @selector(choose:);
  }
  return item;
}

void AppKitStatusItem::setTitle(std::size_t row, const std::string& title) {
  if (row >= titles_.size() || titles_[row] == title) return;
  titles_[row] = title;
  [menu_ itemAtIndex:static_cast<NSInteger>(row)].title = toNSString(title);
}

void AppKitStatusItem::setSymbol(std::string_view name) {
  if (symbol_ == name) return;
  NSImage* image = [NSImage imageWithSystemSymbolName:toNSString(name)
                             accessibilityDescription:nil];
  if (image == nil) return;
  provideItem();
  symbol_ = name;
  constexpr CGFloat kPointSize = 16;
  NSImage* sized =
      [image imageWithSymbolConfiguration:[NSImageSymbolConfiguration
                                              configurationWithPointSize:kPointSize
                                                                  weight:NSFontWeightRegular]];
  if (sized != nil) image = sized;
  [image setTemplate:YES];
  item_.button.image = image;
}

}  // namespace voxtrel
