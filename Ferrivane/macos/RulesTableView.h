// The table of the rules. Its rows cannot be selected, so that one click is enough to edit.
#pragma once

#import <Cocoa/Cocoa.h>

@interface FVRulesTableView : NSTableView

// What is dragged over it has left it again.
@property(copy) void (^whenDragLeaves)(void);

@end
