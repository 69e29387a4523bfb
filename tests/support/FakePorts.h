#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "voxtrel/platform/Application.h"
#include "voxtrel/platform/Log.h"
#include "voxtrel/platform/Notifications.h"
#include "voxtrel/platform/Permissions.h"
#include "voxtrel/platform/SleepWatch.h"
#include "voxtrel/platform/StatusItem.h"

namespace voxtrel::testing {

struct FakeBundle : ApplicationBundle {
  std::optional<std::string> auxiliaryExecutable(std::string_view name) const override {
    askedFor.emplace_back(name);
    if (onAsked) onAsked();
    return engine;
  }
  std::optional<std::string> engine = "/bin/sh";  // a file that exists wherever tests run
  mutable std::vector<std::string> askedFor;
  std::function<void()> onAsked;  // before the answer is given
};

struct FakeLog : Log {
  struct Entry {
    LogLevel level;
    std::string category, message;
    bool operator==(const Entry&) const = default;
  };
  bool isEnabled(LogLevel level) const override { return level != LogLevel::debug || debugEnabled; }
  void write(LogLevel level, std::string_view category, std::string_view message) override {
    entries.push_back({level, std::string(category), std::string(message)});
  }
  bool keepsWords() const override { return wordsKept; }
  bool debugEnabled = false;
  bool wordsKept = false;
  std::vector<Entry> entries;
};

struct FakeNotifications : Notifications {
  void setCategories(std::vector<NotificationCategory> newCategories) override {
    categories = std::move(newCategories);
    setUp.emplace_back("categories");
  }
  void setDelegate(std::weak_ptr<NotificationDelegate> newDelegate) override {
    delegate = std::move(newDelegate);
    setUp.emplace_back("delegate");
  }
  void requestAuthorization() override { setUp.emplace_back("authorization"); }
  void post(UserNotification notification) override { posted.push_back(std::move(notification)); }

  std::vector<std::string> bodies() const {
    std::vector<std::string> all;
    for (const auto& notification : posted) all.push_back(notification.body);
    return all;
  }

  std::vector<NotificationCategory> categories;
  std::weak_ptr<NotificationDelegate> delegate;
  std::vector<std::string> setUp;  // what was asked for at start-up, in order
  std::vector<UserNotification> posted;
};

struct FakeStatusItem : StatusItem {
  void setMenu(std::vector<MenuItem> newRows) override {
    rows = std::move(newRows);
    ++menusSet;
  }
  void setTitle(std::size_t row, const std::string& title) override { rows.at(row).title = title; }
  void setSymbol(std::string_view name) override {
    symbol = name;
    symbols.emplace_back(name);
    if (onSymbol) onSymbol();
  }
  void choose(std::size_t row) const { rows.at(row).action(); }

  std::vector<MenuItem> rows;
  int menusSet = 0;
  std::string symbol;
  std::vector<std::string> symbols;  // every one set, oldest first
  std::function<void()> onSymbol;    // after one was set
};

struct FakeSleepWatch : SleepWatch {
  Subscription onWillSleep(std::function<void()> handler) override {
    willSleep = std::move(handler);
    return Subscription([this] {
      willSleep = nullptr;
      removed.emplace_back("sleep");
    });
  }
  Subscription onDidWake(std::function<void()> handler) override {
    didWake = std::move(handler);
    return Subscription([this] {
      didWake = nullptr;
      removed.emplace_back("wake");
    });
  }
  std::function<void()> willSleep, didWake;
  std::vector<std::string> removed;
};

struct FakeUpdater : Updater {
  void checkForUpdates() override { ++checks; }
  int checks = 0;
};

struct FakeTrust : AccessibilityTrust {
  bool isTrusted(bool prompt) override {
    prompts.push_back(prompt);
    return trusted;
  }
  bool trusted = true;
  std::vector<bool> prompts;  // one for each question
};

struct FakeMicrophoneAccess : MicrophoneAccess {
  void request(std::function<void(bool)> newAnswer) override { answer = std::move(newAnswer); }
  std::function<void(bool)> answer;  // set once asked; the test gives the answer
};

}  // namespace voxtrel::testing
