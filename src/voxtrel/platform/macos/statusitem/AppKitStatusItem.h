#pragma once

#import <AppKit/AppKit.h>

#include <map>

#include "voxtrel/platform/StatusItem.h"

namespace voxtrel {

/// What a menu row may call in place of a closure.
struct SystemAction {
  id target = nil;
  SEL selector = nullptr;
};

/// The item in the menu bar, square, with a template image. It is in the bar from the first symbol or
/// menu on.
/// Thread: the main thread.  Owns: the item and its menu.
/// Fails by: keeping the last image, where the system has no symbol of that name.
class AppKitStatusItem final : public StatusItem {
 public:
  /// By the name that a row gives as its `systemAction`.
  using SystemActions = std::map<std::string, SystemAction, std::less<>>;

  explicit AppKitStatusItem(SystemActions systemActions);
  AppKitStatusItem(const AppKitStatusItem&) = delete;
  AppKitStatusItem& operator=(const AppKitStatusItem&) = delete;
  ~AppKitStatusItem() override;

  void setMenu(std::vector<MenuItem> rows) override;
  void setTitle(std::size_t row, const std::string& title) override;
  void setSymbol(std::string_view name) override;

  /// Nil until there is something to show.
  NSStatusItem* nativeItem() const { return item_; }

 private:
  void provideItem();
  void detachRows();
  NSMenuItem* makeRow(MenuItem row);

  const SystemActions systemActions_;
  NSStatusItem* item_ = nil;
  NSMenu* menu_ = nil;
  /// The rows' closures; a row does not hold its target.
  NSMutableArray* targets_ = nil;
  std::vector<std::string> titles_;
  std::string symbol_;
};

}  // namespace voxtrel
