#include "theme/accessible_controls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace dunmere {
namespace {

using testing::ElementsAre;

TEST(AccessibleControls, AButtonIsDisabledWhileItsItemIs) {
  QQuickItem item;
  QAccessibleInterface* const button = new AccessibleButton(&item);
  QAccessible::registerAccessibleInterface(button);
  EXPECT_FALSE(button->state().disabled);
  item.setEnabled(false);
  EXPECT_TRUE(button->state().disabled);
  EXPECT_EQ(button->role(), QAccessible::Button);
}

TEST(AccessibleControls, ASplitterHasAValueWithinItsBounds) {
  Splitter item;
  item.setProperty("minimum", 200);
  item.setProperty("maximum", 260);
  item.setPosition(220);
  auto* const splitter = new AccessibleSplitter(&item);
  QAccessible::registerAccessibleInterface(splitter);
  EXPECT_EQ(splitter->valueInterface()->minimumValue().toReal(), 200);
  EXPECT_EQ(splitter->valueInterface()->currentValue().toReal(), 220);
  EXPECT_EQ(splitter->valueInterface()->maximumValue().toReal(), 260);
  std::vector<qreal> wanted;
  QObject::connect(&item, &Splitter::moveRequested, &item, [&](qreal position) { wanted.push_back(position); });
  for (const int value : {0, 230, 1000}) splitter->valueInterface()->setCurrentValue(value);
  EXPECT_THAT(wanted, ElementsAre(200, 230, 260));
}

}  // namespace
}  // namespace dunmere
