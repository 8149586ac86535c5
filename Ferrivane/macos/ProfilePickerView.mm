#import "Ferrivane/macos/ProfilePickerView.h"

#import "Ferrivane/macos/ViewParts.h"

using namespace ferrivane;

@implementation FVProfilePickerView {
    ProfilePicker::Choices _shown;
}

- (void)showChoices:(const ProfilePicker::Choices&)choices {
    if (choices.all != _shown.all) {
        std::vector<std::string> titles;
        for (const auto& choice : choices.all) titles.push_back(choice.title);
        Views::setTitles(self, titles);
    }
    _shown = choices;
    [self selectItemAtIndex:static_cast<NSInteger>(choices.current)];
}

- (std::string)chosenValue {
    return _shown.all.at(static_cast<std::size_t>(self.indexOfSelectedItem)).value;
}

@end
