// What the views of the settings are made of. Main thread only.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#import <Cocoa/Cocoa.h>

#include "Ferrivane/SettingsControls.h"

namespace ferrivane::Views {

// For a box to begin with: one of no size has no place for its margins.
inline constexpr NSRect kSomeFrame{{0, 0}, {400, 200}};

// Gives a view its identifier and the name that is read out.
void identify(NSView* view, const Control& control);
void identifyInRow(NSView* view, const Control& control, std::size_t index);

// Not read out: what it stands beside says the same.
NSImageView* symbol(std::string_view name, NSColor* tint);
NSTextField* label(std::string_view text);
// Small, for what explains.
NSTextField* secondaryLabel(std::string_view text);
NSTextField* wrappingLabel();
// For one line of text, as wide as it can be. The class may be one derived from it.
NSTextField* field(Class type = NSTextField.class);
// What is selected in a text that is the same stays so.
void setText(NSTextField* field, std::string_view text);
NSButton* button(const Control& control, std::string_view title, id target, SEL action);
NSButton* borderless(std::string_view symbol, std::string_view toolTip, id target, SEL action);

// A long choice is shortened.
void setUp(NSPopUpButton* popUp, int width, id target, SEL action);

// Views side by side. At most one of them takes the width that is left: the one that stretches.
NSStackView* row(NSArray<NSView*>* views);
// Views below each other, each as wide as the whole.
NSStackView* column(NSArray<NSView*>* views, CGFloat spacing);
// A box with a title.
NSBox* group(std::string_view title, NSView* content);
// Takes the width that a row has left, and no more than that.
void stretch(NSView* view);
// Nothing, as wide as what is left.
NSView* spacer();
void fixWidth(NSView* view, int width);
void fill(NSView* outer, NSView* inner, CGFloat inset);

// The choices of a pop-up, two of which may have the same title.
void setTitles(NSPopUpButton* popUp, const std::vector<std::string>& titles);

}  // namespace ferrivane::Views
