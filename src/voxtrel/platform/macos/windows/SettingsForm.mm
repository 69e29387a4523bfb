#include "voxtrel/platform/macos/windows/SettingsForm.h"

#include <utility>
#include <vector>

#include "voxtrel/platform/macos/foundation/Strings.h"
#include "voxtrel/platform/macos/windows/FormStyle.h"

using voxtrel::SettingsView;
using voxtrel::toNSString;

namespace {

constexpr CGFloat kColumnSpacing = 8;

/// A label beside a control, both centred in the row's height. The last row has no label.
struct Row {
  NSTextField* label;
  NSView* control;
  CGFloat height;
};

CGFloat heightOf(const std::vector<Row>& rows) {
  CGFloat height = 0;
  for (const Row& row : rows) height += row.height + SettingsView::kRowSpacingPt;
  return height - SettingsView::kRowSpacingPt;
}

NSRect centred(CGFloat x, CGFloat width, CGFloat height, const Row& row, CGFloat top) {
  return NSMakeRect(x, top + (row.height - height) / 2, width, height);
}

}  // namespace

@interface VoxtrelSettingsForm ()
- (void)addRow:(std::string_view)label control:(NSControl*)control;
- (void)choose:(NSPopUpButton*)picker;
- (void)toggleLaunchAtLogin:(NSButton*)box;
- (void)save:(id)sender;
@end

@implementation VoxtrelSettingsForm {
  std::shared_ptr<SettingsView> form_;
  std::vector<Row> rows_;
  NSPopUpButton* hotkey_;
  NSPopUpButton* input_;
  NSPopUpButton* output_;
  NSButton* launchAtLogin_;
  NSButton* save_;
}

- (instancetype)initWithFrame:(NSRect)frame form:(std::shared_ptr<SettingsView>)form {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  form_ = std::move(form);
  [self makeRows];
  [self makeSaveButton];
  [self placeRows];
  // Weak: the form may outlive these controls.
  __weak VoxtrelSettingsForm* weakSelf = self;
  form_->setOnChange([weakSelf] { [weakSelf showLaunchAtLogin]; });
  [self showLaunchAtLogin];
  return self;
}

- (BOOL)isFlipped {
  return YES;  // rows are counted from the top
}

- (void)appeared {
  form_->appeared();
}

- (NSView*)firstInFocus {
  return hotkey_;
}

// Controls ----------------------------------------------------------------------------------------

- (void)addRow:(std::string_view)label control:(NSControl*)control {
  NSTextField* const text =
      voxtrel::makeFormLabel(label, voxtrel::semiboldFont(), NSTextAlignmentRight);
  control.accessibilityLabel = text.stringValue;
  [self addSubview:text];
  [self addSubview:control];
  rows_.push_back({text, control, [control alignmentRectForFrame:control.frame].size.height});
}

template <typename Choices>
static NSPopUpButton* makePicker(const Choices& choices, std::size_t selected, id target) {
  auto* const picker = [[NSPopUpButton alloc] initWithFrame:NSZeroRect pullsDown:NO];
  for (const auto& choice : choices) [picker addItemWithTitle:toNSString(choice.display)];
  [picker selectItemAtIndex:static_cast<NSInteger>(selected)];
  picker.target = target;
  picker.action = @selector(choose:);
  [picker sizeToFit];
  return picker;
}

- (void)makeRows {
  NSTextField* const model =
      voxtrel::makeFormLabel(SettingsView::kModelName,
                             [NSFont systemFontOfSize:NSFont.systemFontSize], NSTextAlignmentLeft);
  [model sizeToFit];
  hotkey_ = makePicker(SettingsView::hotkeys(), form_->selectedHotkeyIndex(), self);
  input_ = makePicker(SettingsView::inputLanguages(), form_->selectedInputIndex(), self);
  output_ = makePicker(SettingsView::outputs(), form_->selectedOutputIndex(), self);
  launchAtLogin_ = [NSButton checkboxWithTitle:toNSString(SettingsView::kLaunchAtLoginTitle)
                                        target:self
                                        action:@selector(toggleLaunchAtLogin:)];
  [launchAtLogin_ sizeToFit];
  [self addRow:SettingsView::kModelLabel control:model];
  [self addRow:SettingsView::kHotkeyLabel control:hotkey_];
  [self addRow:SettingsView::kInputLanguageLabel control:input_];
  [self addRow:SettingsView::kOutputLabel control:output_];
  [self addSubview:launchAtLogin_];
  rows_.push_back({nil, launchAtLogin_, launchAtLogin_.frame.size.height});
}

- (void)makeSaveButton {
  save_ = voxtrel::makeLargeButton(SettingsView::kSaveTitle, self, @selector(save:));
  save_.keyEquivalent = @"\r";
  [save_ sizeToFit];
  [self addSubview:save_];
}

- (void)placeRows {
  const NSSize saveSize = [save_ alignmentRectForFrame:save_.frame].size;
  const CGFloat height = heightOf(rows_) + SettingsView::kRowSpacingPt + saveSize.height;
  const CGFloat width =
      SettingsView::kLabelWidthPt + kColumnSpacing + SettingsView::kControlWidthPt;
  const CGFloat left = (self.bounds.size.width - width) / 2;
  const CGFloat controlLeft = left + SettingsView::kLabelWidthPt + kColumnSpacing;
  CGFloat top = (self.bounds.size.height - height) / 2;
  for (const Row& row : rows_) {
    if (row.label != nil) {
      const CGFloat labelHeight = voxtrel::neededHeight(row.label, SettingsView::kLabelWidthPt);
      row.label.frame = centred(left, SettingsView::kLabelWidthPt, labelHeight, row, top);
    }
    voxtrel::setAlignmentFrame(
        row.control, centred(controlLeft, SettingsView::kControlWidthPt, row.height, row, top));
    top += row.height + SettingsView::kRowSpacingPt;
  }
  voxtrel::setAlignmentFrame(save_, NSMakeRect((self.bounds.size.width - saveSize.width) / 2, top,
                                               saveSize.width, saveSize.height));
}

// What the user does ------------------------------------------------------------------------------

- (void)choose:(NSPopUpButton*)picker {
  if (picker.indexOfSelectedItem < 0) return;
  const auto index = static_cast<std::size_t>(picker.indexOfSelectedItem);
  if (picker == hotkey_) form_->selectHotkey(index);
  if (picker == input_) form_->selectInput(index);
  if (picker == output_) form_->selectOutput(index);
}

- (void)toggleLaunchAtLogin:(NSButton*)box {
  form_->setLaunchAtLogin(box.state == NSControlStateValueOn);
}

- (void)save:(id)__unused sender {
  const auto form = form_;  // the callback may release this view
  form->saveAndRestart();
}

- (void)showLaunchAtLogin {
  launchAtLogin_.state = form_->launchAtLogin() ? NSControlStateValueOn : NSControlStateValueOff;
}

@end
