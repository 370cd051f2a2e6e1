#include "platform/x11/x11_accessibility.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb_icccm.h>

#include "x11_test_support.h"

namespace corvetta {
namespace {

// Windows of this very process as openbox frames them, on two monitors side by side.
class X11AccessibilityTest : public ::testing::Test {
protected:
    void SetUp() override {
        auto& client = fixture.client();
        window = client.createWindow(100, 100, 400, 300);
        xcb_size_hints_t hints{};
        xcb_icccm_size_hints_set_min_size(&hints, 120, 80);
        xcb_icccm_set_wm_normal_hints(client.raw(), window, &hints);
        const xcb_atom_t deleteWindow = client.atom("WM_DELETE_WINDOW");
        client.setCardinals(window, "WM_PROTOCOLS", {deleteWindow}, client.atom("ATOM"));
        client.setCardinals(window, "_NET_WM_PID", {static_cast<std::uint32_t>(self)});
        client.setText(window, "WM_NAME", "notes", XCB_ATOM_STRING);
        xcb_map_window(client.raw(), window);
        client.sync();
        // Listed is not yet framed: openbox reparents, decorates and places the window in steps,
        // and a read in between sees a frame that is about to change.
        ASSERT_TRUE(fixture.runUntil([&] {
            const auto extents = X11Properties(fixture.connection()).frameExtents(window);
            if (!windowElement().isValid() || !extents || extents->top == 0) {
                return false;
            }
            const auto position =
                accessibility.copyAttributeValue(windowElement(), AXAttribute::kPosition);
            const auto outer = frame();
            return position &&
                   std::get<Point>(*position) == Point{double(outer.x), double(outer.y)};
        }));
    }

    AXElement windowElement() {
        auto windows = accessibility.copyAttributeValue(accessibility.applicationElement(self),
                                                        AXAttribute::kWindows);
        const auto* list = windows ? std::get_if<std::vector<AXElement>>(&*windows) : nullptr;
        return list && !list->empty() ? list->front() : AXElement();
    }
    template <class T>
    T read(std::string_view attribute) {
        auto value = accessibility.copyAttributeValue(windowElement(), attribute);
        EXPECT_TRUE(value.has_value()) << attribute;
        return value ? std::get<T>(*value) : T{};
    }
    RootRect frame() { return *X11Properties(fixture.connection()).frameRect(window); }

    testing::X11Fixture fixture{[] {
        testing::VirtualDisplayOptions options;
        options.monitors = {{0, 0, 1280, 800}, {1280, 0, 1024, 768}};
        options.windowManager = testing::WindowManager::openboxForTests;
        return options;
    }()};
    const ProcessId self = getpid();
    X11Screens screens{fixture.connection()};
    X11Applications applications{fixture.connection(), {1, "", "", {}, false}, {}};
    X11Accessibility accessibility{fixture.connection(), screens, applications};
    xcb_window_t window = 0;
};

TEST_F(X11AccessibilityTest, ReadsTheOuterFrameAndTheWindowsHints) {
    const auto outer = frame();
    const auto extents = *X11Properties(fixture.connection()).frameExtents(window);
    EXPECT_GT(extents.top, 0) << "openbox decorates the window";
    EXPECT_EQ(read<Point>(AXAttribute::kPosition), (Point{double(outer.x), double(outer.y)}));
    EXPECT_EQ(read<Size>(AXAttribute::kSize),
              (Size{400.0 + extents.left + extents.right, 300.0 + extents.top + extents.bottom}));
    EXPECT_EQ(read<Size>(AXAttribute::kMinSize),
              (Size{120.0 + extents.left + extents.right, 80.0 + extents.top + extents.bottom}));
    EXPECT_EQ(read<std::string>(AXAttribute::kTitle), "notes");
    EXPECT_EQ(read<std::string>(AXAttribute::kSubrole), kStandardWindowSubrole);
    EXPECT_EQ(read<std::int64_t>(AXAttribute::kWindowId), window);
    EXPECT_FALSE(read<bool>(AXAttribute::kMinimized));
    EXPECT_FALSE(read<bool>(AXAttribute::kFullScreen));
    EXPECT_EQ(accessibility.copyAttributeValue(windowElement(), "AXNothing").error(),
              AXErrorCode::attributeUnsupported);

    // Asked together, the same answers in the order asked; the window's reading, taken by the
    // reads above, answers them all without a wait for the server.
    const std::vector<std::string_view> together = {AXAttribute::kSize, "AXNothing",
                                                    AXAttribute::kFullScreen, AXAttribute::kTitle,
                                                    AXAttribute::kPosition};
    const auto element = windowElement();
    const auto before = fixture.connection().roundTrips();
    const auto values = accessibility.copyMultipleAttributeValues(element, together);
    ASSERT_EQ(values.size(), together.size());
    for (std::size_t index = 0; index < together.size(); ++index) {
        const auto alone = accessibility.copyAttributeValue(element, together[index]);
        ASSERT_EQ(values[index].has_value(), alone.has_value()) << together[index];
        if (alone) {
            EXPECT_EQ(*values[index], *alone) << together[index];
        } else {
            EXPECT_EQ(values[index].error(), alone.error()) << together[index];
        }
    }
    EXPECT_EQ(fixture.connection().roundTrips(), before);
    // What another client changes is read anew once the window announces it.
    fixture.client().setText(window, "WM_NAME", "renamed", XCB_ATOM_STRING);
    fixture.catchUp();
    EXPECT_EQ(read<std::string>(AXAttribute::kTitle), "renamed");
}

TEST_F(X11AccessibilityTest, ASetIsAppliedBeforeItReturns) {
    struct Case {
        std::optional<Point> position;
        std::optional<Size> size;
    };
    for (const auto& step : std::vector<Case>{{Point{300, 200}, {}},
                                              {{}, Size{640, 480}},
                                              {Point{1400, 60}, {}},
                                              {Point{0, 0}, Size{500, 400}}}) {
        const auto element = windowElement();
        if (step.size) {
            ASSERT_EQ(accessibility.setAttributeValue(element, AXAttribute::kSize, *step.size),
                      AXErrorCode::success);
            EXPECT_EQ(read<Size>(AXAttribute::kSize), *step.size);
        }
        if (step.position) {
            ASSERT_EQ(
                accessibility.setAttributeValue(element, AXAttribute::kPosition, *step.position),
                AXErrorCode::success);
            EXPECT_EQ(read<Point>(AXAttribute::kPosition), *step.position);
        }
    }
    // Below its minimum: what the window manager made of it is there at once, not the old size.
    const Size minimum = read<Size>(AXAttribute::kMinSize);
    ASSERT_EQ(accessibility.setAttributeValue(windowElement(), AXAttribute::kSize, Size{50, 40}),
              AXErrorCode::success);
    EXPECT_EQ(read<Size>(AXAttribute::kSize), minimum);
    // A terminal's cells: the request is made on the window's steps, so the window manager's
    // rounding is no surprise to the read that follows.
    auto& client = fixture.client();
    xcb_size_hints_t cells{};
    xcb_icccm_size_hints_set_min_size(&cells, 120, 80);
    xcb_icccm_size_hints_set_base_size(&cells, 4, 2);
    xcb_icccm_size_hints_set_resize_inc(&cells, 10, 7);
    xcb_icccm_set_wm_normal_hints(client.raw(), window, &cells);
    client.sync();
    const auto extents = *X11Properties(fixture.connection()).frameExtents(window);
    const int horizontal = extents.left + extents.right, vertical = extents.top + extents.bottom;
    ASSERT_EQ(accessibility.setAttributeValue(windowElement(), AXAttribute::kSize, Size{500, 400}),
              AXErrorCode::success);
    const int cellsWide = (500 - horizontal - 4) / 10, cellsHigh = (400 - vertical - 2) / 7;
    EXPECT_EQ(read<Size>(AXAttribute::kSize), (Size{double(4 + cellsWide * 10 + horizontal),
                                                    double(2 + cellsHigh * 7 + vertical)}));

    EXPECT_EQ(accessibility.setAttributeValue(windowElement(), AXAttribute::kSize, Point{1, 2}),
              AXErrorCode::illegalArgument);
}

TEST_F(X11AccessibilityTest, AMaximizedWindowIsRestoredBeforeItMoves) {
    auto& client = fixture.client();
    xcb_client_message_event_t maximize{};
    maximize.response_type = XCB_CLIENT_MESSAGE;
    maximize.format = 32;
    maximize.window = window;
    maximize.type = client.atom("_NET_WM_STATE");
    maximize.data.data32[0] = 1;
    maximize.data.data32[1] = client.atom("_NET_WM_STATE_MAXIMIZED_VERT");
    maximize.data.data32[2] = client.atom("_NET_WM_STATE_MAXIMIZED_HORZ");
    xcb_send_event(client.raw(), 0, client.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&maximize));
    client.sync();
    X11Properties properties(fixture.connection());
    ASSERT_TRUE(fixture.runUntil([&] {
        return frame().width >= 1280 &&
               *properties.hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ");
    }));

    ASSERT_EQ(accessibility.setAttributeValue(windowElement(), AXAttribute::kSize, Size{300, 200}),
              AXErrorCode::success);
    EXPECT_FALSE(*properties.hasState(window, "_NET_WM_STATE_MAXIMIZED_VERT"));
    EXPECT_EQ(read<Size>(AXAttribute::kSize), (Size{300, 200}));
}

TEST_F(X11AccessibilityTest, TheCloseButtonAsksTheApplicationAndGoneWindowsAreInvalid) {
    const auto element = windowElement();
    const auto button =
        std::get<AXElement>(*accessibility.copyAttributeValue(element, AXAttribute::kCloseButton));
    EXPECT_EQ(accessibility.performAction(element, AXAction::kPress),
              AXErrorCode::actionUnsupported);
    ASSERT_EQ(accessibility.performAction(button, AXAction::kPress), AXErrorCode::success);
    // Openbox passes the request on to the window's owner as WM_DELETE_WINDOW.
    auto& client = fixture.client();
    XcbPointer<xcb_generic_event_t> event(xcb_wait_for_event(client.raw()));
    ASSERT_TRUE(event);
    ASSERT_EQ(event->response_type & 0x7f, XCB_CLIENT_MESSAGE);
    EXPECT_EQ(reinterpret_cast<xcb_client_message_event_t&>(*event).data.data32[0],
              client.atom("WM_DELETE_WINDOW"));

    client.destroy(window);
    client.sync();
    ASSERT_TRUE(fixture.runUntil([&] { return applications.windowsOf(self).empty(); }));
    EXPECT_EQ(accessibility.copyAttributeValue(element, AXAttribute::kPosition).error(),
              AXErrorCode::invalidUIElement);
    for (const auto& value : accessibility.copyMultipleAttributeValues(
             element, {AXAttribute::kPosition, AXAttribute::kFullScreen})) {
        EXPECT_EQ(value.error(), AXErrorCode::invalidUIElement);
    }
    EXPECT_EQ(accessibility.setAttributeValue(element, AXAttribute::kPosition, Point{1, 1}),
              AXErrorCode::invalidUIElement);
    EXPECT_EQ(accessibility.performAction(button, AXAction::kPress), AXErrorCode::invalidUIElement);
    EXPECT_EQ(
        accessibility
            .copyAttributeValue(accessibility.applicationElement(999999), AXAttribute::kWindows)
            .error(),
        AXErrorCode::invalidUIElement);
    EXPECT_EQ(accessibility.processOf(AXElement()).error(), AXErrorCode::illegalArgument);
}

TEST(X11SizeHintsTest, FitsARequestOnTheWindowsStepsAboveItsMinimum) {
    auto hints = [](int minimum, int base, int step) {
        xcb_size_hints_t raw{};
        if (minimum > 0) {
            xcb_icccm_size_hints_set_min_size(&raw, minimum, minimum);
        }
        if (base >= 0) {
            xcb_icccm_size_hints_set_base_size(&raw, base, base);
        }
        if (step > 0) {
            xcb_icccm_size_hints_set_resize_inc(&raw, step, step);
        }
        return X11SizeHints::from(raw);
    };
    const struct {
        const char* name;
        X11SizeHints hints;
        int asked, fitted;
    } cases[] = {
        {"no hints", hints(0, -1, 0), 637, 637},
        {"minimum only", hints(100, -1, 0), 40, 100},
        {"steps from the base", hints(0, 4, 10), 637, 634},
        {"steps from the minimum when there is no base", hints(20, -1, 10), 637, 630},
        {"below the minimum, the next step above it", hints(120, 4, 10), 50, 124},
        {"a minimum on the steps", hints(124, 4, 10), 50, 124},
        {"never below one", hints(0, -1, 0), -5, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.hints.fit(c.asked, c.asked), (X11SizeHints::ClientSize{c.fitted, c.fitted}));
    }
}

TEST_F(X11AccessibilityTest, OnlyAWindowManagerThatPromisesAnswersIsPinged) {
    X11WindowManagerPing ping(fixture.connection());
    ASSERT_TRUE(ping.isAvailable());
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(ping.roundTrip(X11Accessibility::kApplyPatience)) << round;
    }

    testing::X11Fixture bare;
    X11WindowManagerPing unanswered(bare.connection());
    EXPECT_FALSE(unanswered.isAvailable());
    EXPECT_FALSE(unanswered.roundTrip(std::chrono::milliseconds(0)));
}

}  // namespace
}  // namespace corvetta
