// The choice of a Chrome profile. Its target is told when the person chooses.
#pragma once

#include <string>

#import <Cocoa/Cocoa.h>

#include "Ferrivane/ProfilePicker.h"

@interface FVProfilePickerView : NSPopUpButton

- (void)showChoices:(const ferrivane::ProfilePicker::Choices&)choices;
// What choosing the selected entry writes.
- (std::string)chosenValue;

@end
