#include "voxtrel/platform/macos/windows/DownloadForm.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "voxtrel/platform/macos/foundation/Strings.h"
#include "voxtrel/platform/macos/windows/FormStyle.h"
#include "voxtrel/platform/macos/windows/LogView.h"

using voxtrel::ModelDownloadView;
using voxtrel::toNSString;

namespace {

constexpr NSTimeInterval kFrameSeconds = 1.0 / 60;
constexpr CGFloat kErrorSpacing = 8;
constexpr CGFloat kBarHeight = 20;  // until it fits itself

/// What stands at one height of the form.
struct Block {
  NSView* view;
  CGFloat height;
};

NSTextField* makeCentredLabel(std::string_view text, NSFont* font, NSColor* color) {
  NSTextField* const label = voxtrel::makeFormLabel(text, font, NSTextAlignmentCenter);
  label.textColor = color;
  return label;
}

NSView* makeGroup(NSArray<NSView*>* views) {
  auto* const group = [[NSView alloc] initWithFrame:NSZeroRect];
  for (NSView* view in views) [group addSubview:view];
  return group;
}

/// Places two controls in a group, the first above, and returns the group's height.
CGFloat stack(NSControl* lower, NSView* upper, CGFloat upperHeight, CGFloat spacing, CGFloat inset,
              CGFloat width) {
  const CGFloat lowerHeight = lower.isHidden ? 0 : voxtrel::neededHeight(lower, width - 2 * inset);
  const CGFloat bottom = lower.isHidden ? 0 : lowerHeight + spacing;
  lower.frame = NSMakeRect(inset, 0, width - 2 * inset, lowerHeight);
  upper.frame = NSMakeRect(inset, bottom, width - 2 * inset, upperHeight);
  return bottom + upperHeight;
}

}  // namespace

@interface VoxtrelDownloadForm ()
- (void)skip:(id)sender;
- (void)retry:(id)sender;
@end

@implementation VoxtrelDownloadForm {
  std::shared_ptr<ModelDownloadView> form_;
  NSTextField* title_;
  NSTextField* description_;
  NSView* progress_;
  NSProgressIndicator* bar_;
  NSTextField* amount_;
  VoxtrelLogView* log_;
  NSView* error_;
  NSTextField* message_;
  NSTextField* hint_;
  NSView* buttons_;
  NSButton* skip_;
  NSButton* retry_;
  NSTimer* nextFrame_;
  ModelDownloadView::DownloadState::Kind seenKind_;
  std::size_t seenLines_;
}

- (instancetype)initWithFrame:(NSRect)frame form:(std::shared_ptr<ModelDownloadView>)form {
  self = [super initWithFrame:frame];
  if (self == nil) return nil;
  form_ = std::move(form);
  [self makeTexts];
  [self makeProgress];
  [self makeButtons];
  log_ = [[VoxtrelLogView alloc]
      initWithFrame:NSMakeRect(0, 0, self.innerWidth, ModelDownloadView::kLogHeightPt)
        lineSpacing:ModelDownloadView::kLogLineSpacingPt
       cornerRadius:ModelDownloadView::kLogCornerRadiusPt];
  for (NSView* view in @[ title_, description_, progress_, log_, error_, buttons_ ]) {
    [self addSubview:view];
  }
  // Weak: the form may outlive these controls.
  __weak VoxtrelDownloadForm* weakSelf = self;
  form_->setOnChange([weakSelf] { [weakSelf formChanged]; });
  [self refresh];
  return self;
}

- (void)dealloc {
  [nextFrame_ invalidate];
}

- (void)appeared {
  form_->appeared();
}

- (NSView*)firstInFocus {
  return nil;
}

// Controls ----------------------------------------------------------------------------------------

- (CGFloat)innerWidth {
  return self.bounds.size.width - 2 * ModelDownloadView::kPaddingPt;
}

- (void)makeTexts {
  NSFont* const body = [NSFont systemFontOfSize:NSFont.systemFontSize];
  NSFont* const caption = voxtrel::captionFont();
  title_ = makeCentredLabel(ModelDownloadView::kTitle, voxtrel::headlineFont(), NSColor.labelColor);
  description_ =
      makeCentredLabel(ModelDownloadView::kDescription, body, NSColor.secondaryLabelColor);
  message_ = makeCentredLabel({}, caption, NSColor.systemRedColor);
  hint_ = makeCentredLabel(ModelDownloadView::kErrorHint, caption, NSColor.systemOrangeColor);
  error_ = makeGroup(@[ message_, hint_ ]);
}

- (void)makeProgress {
  bar_ = [[NSProgressIndicator alloc] initWithFrame:NSMakeRect(0, 0, kBarHeight, kBarHeight)];
  bar_.style = NSProgressIndicatorStyleBar;
  bar_.indeterminate = NO;
  bar_.minValue = 0;
  bar_.maxValue = 1;
  bar_.accessibilityLabel = @"Download progress";
  [bar_ sizeToFit];
  amount_ = makeCentredLabel({}, voxtrel::monospacedCaptionFont(), NSColor.secondaryLabelColor);
  progress_ = makeGroup(@[ bar_, amount_ ]);
}

- (void)makeButtons {
  skip_ = [NSButton buttonWithTitle:toNSString(ModelDownloadView::kSkipTitle)
                             target:self
                             action:@selector(skip:)];
  [skip_ sizeToFit];
  retry_ = voxtrel::makeLargeButton(ModelDownloadView::kRetryTitle, self, @selector(retry:));
  buttons_ = makeGroup(@[ skip_, retry_ ]);
}

// Places ------------------------------------------------------------------------------------------

- (CGFloat)placeButtons {
  const NSSize skip = [skip_ alignmentRectForFrame:skip_.frame].size;
  const NSSize retry = [retry_ alignmentRectForFrame:retry_.frame].size;
  // A hidden button keeps its place, so that nothing moves sideways.
  const CGFloat height = std::max(skip.height, retry.height);
  voxtrel::setAlignmentFrame(skip_,
                             NSMakeRect(0, (height - skip.height) / 2, skip.width, skip.height));
  voxtrel::setAlignmentFrame(
      retry_, NSMakeRect(self.innerWidth - retry.width, (height - retry.height) / 2, retry.width,
                         retry.height));
  return height;
}

- (CGFloat)placeProgress {
  return stack(amount_, bar_, bar_.frame.size.height, ModelDownloadView::kProgressSpacingPt,
               ModelDownloadView::kProgressSidePaddingPt, self.innerWidth);
}

- (CGFloat)placeError {
  return stack(hint_, message_, voxtrel::neededHeight(message_, self.innerWidth), kErrorSpacing, 0,
               self.innerWidth);
}

- (std::vector<Block>)visibleBlocks {
  std::vector<Block> blocks = {
      {title_, voxtrel::neededHeight(title_, self.innerWidth)},
      {description_, voxtrel::neededHeight(description_, self.innerWidth)}};
  if (form_->showsProgress()) blocks.push_back({progress_, [self placeProgress]});
  if (form_->showsLog()) blocks.push_back({log_, ModelDownloadView::kLogHeightPt});
  if (form_->showsError()) blocks.push_back({error_, [self placeError]});
  blocks.push_back({buttons_, [self placeButtons]});
  return blocks;
}

/// Stacks the visible blocks from the top, in the middle of the height.
- (void)place {
  const std::vector<Block> blocks = [self visibleBlocks];
  CGFloat height = -ModelDownloadView::kSpacingPt;
  for (const Block& block : blocks) height += block.height + ModelDownloadView::kSpacingPt;
  CGFloat top = (self.bounds.size.height + height) / 2;
  for (const Block& block : blocks) {
    top -= block.height;
    block.view.frame =
        NSMakeRect(ModelDownloadView::kPaddingPt, top, self.innerWidth, block.height);
    top -= ModelDownloadView::kSpacingPt;
  }
  self.needsDisplay = YES;
}

// Following the form ------------------------------------------------------------------------------

- (void)formChanged {
  const std::size_t lines = form_->logLines().size();
  if (lines < seenLines_) [log_ clear];
  seenLines_ = lines;
  if (form_->downloadState().kind != seenKind_) {
    [self refresh];
  } else {
    [self refreshAtNextFrame];
  }
}

- (void)refreshAtNextFrame {
  if (nextFrame_.isValid) return;
  __weak VoxtrelDownloadForm* weakSelf = self;
  nextFrame_ = [NSTimer timerWithTimeInterval:kFrameSeconds
                                      repeats:NO
                                        block:^(NSTimer*) {
                                          [weakSelf refresh];
                                        }];
  [NSRunLoop.mainRunLoop addTimer:nextFrame_ forMode:NSRunLoopCommonModes];
}

- (void)refresh {
  [nextFrame_ invalidate];
  seenKind_ = form_->downloadState().kind;
  bar_.doubleValue = std::clamp(form_->downloadProgress(), 0.0, 1.0);
  amount_.stringValue = toNSString(form_->amountText());
  message_.stringValue = toNSString(form_->downloadState().message);
  progress_.hidden = !form_->showsProgress();
  amount_.hidden = !form_->showsAmount();
  log_.hidden = !form_->showsLog();
  error_.hidden = !form_->showsError();
  retry_.hidden = !form_->showsRetry();
  skip_.enabled = form_->skipIsEnabled();
  [self place];
  [log_ follow:form_->logLines()];
}

// What the user does ------------------------------------------------------------------------------

- (void)skip:(id)__unused sender {
  const auto form = form_;  // the callback may release this view
  form->skip();
}

- (void)retry:(id)__unused sender {
  const auto form = form_;
  form->retry();
}

@end
