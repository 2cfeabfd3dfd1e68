#include <algorithm>
#include <chrono>
#include <filesystem>

#include "platform/linux/desktop/accessibility_bus.h"
#include "platform/linux/desktop/x_windows.h"
#include "platform/window_worker.h"

namespace quirepress {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLongestLook{1'200};
constexpr int kMostNodes = 600;  // of one look into a window
constexpr int kMostDepth = 25;

bool IsDialogRole(std::uint32_t role) {
    return role == node_role::kDialog || role == node_role::kAlert || role == node_role::kFileChooser ||
           role == node_role::kColorChooser || role == node_role::kFontChooser;
}

// What holds many nodes and none that is of use here.
bool IsBulkRole(std::uint32_t role) {
    constexpr std::uint32_t kBulk[] = {
        node_role::kTable,       node_role::kTree,    node_role::kTreeTable, node_role::kList,
        node_role::kListBox,     node_role::kMenuBar, node_role::kMenu,      node_role::kDocumentFrame,
        node_role::kDocumentWeb, node_role::kComboBox};
    return std::find(std::begin(kBulk), std::end(kBulk), role) != std::end(kBulk);
}

ControlRole ControlRoleOf(std::uint32_t role, bool isEditable) {
    switch (role) {
        case node_role::kPushButton:
            return ControlRole::kButton;
        case node_role::kPasswordText:
            return ControlRole::kPasswordField;
        case node_role::kText:
        case node_role::kEntry:
            return isEditable ? ControlRole::kTextField : ControlRole::kLabel;
        case node_role::kLabel:
            return ControlRole::kLabel;
        default:
            return ControlRole::kOther;
    }
}

std::string IdOf(const AccessibleNode& node) {
    return node.program + node.path;
}

AccessibleNode NodeOf(const std::string& id) {
    const std::size_t path = std::min(id.find('/'), id.size());
    return {id.substr(0, path), id.substr(path)};
}

std::string ProgramOf(std::int64_t processId) {
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/" + std::to_string(processId) + "/exe", error);
    return error ? std::string() : path.filename().string();
}

class DesktopWindows : public AppWindows {
public:
    explicit DesktopWindows(std::unique_ptr<AccessibilityBus> bus) : m_bus(std::move(bus)) {}

    std::vector<AppWindow> ListWindows() override {
        std::vector<AppWindow> windows;
        m_deadline = Clock::now() + kLongestLook;
        for (const AccessibleNode& program : m_bus->Programs()) {
            if (Clock::now() >= m_deadline) break;
            for (const AccessibleNode& window : m_bus->Children(program)) AddWindow(window, windows);
        }
        return windows;
    }

    std::vector<AppControl> ListControls(const AppWindow& window) override {
        std::vector<AppControl> controls;
        m_nodesLeft = kMostNodes;
        m_deadline = Clock::now() + kLongestLook;
        AddControlsOf(NodeOf(window.id), 0, controls);
        return controls;
    }

    bool SetText(const AppWindow&, const AppControl& field, std::string_view text) override {
        return m_bus->SetText(NodeOf(field.id), std::string(text));
    }

    bool Press(const AppWindow&, const AppControl& button) override {
        return m_bus->DoFirstAction(NodeOf(button.id));
    }

    // Keys go to whatever window has the user's attention. The button that Return stands for is pressed
    // instead, and where a window tells of none, the key is sent when the window is the one that gets it.
    bool SendReturn(const AppWindow& window) override {
        for (const AppControl& control : ListControls(window))
            if (control.isDefault && Press(window, control)) return true;
        constexpr std::int32_t kReturnKey = 0xFF0D;
        return m_bus->States(NodeOf(window.id)).Has(NodeState::kActive) && m_bus->SendKey(kReturnKey);
    }

    bool Close(const AppWindow& window) override {
        const AccessibleNode node = NodeOf(window.id);
        const std::int64_t processId = m_bus->ProcessOf(node);
        return processId != 0 && CloseXWindow(processId, m_bus->Name(node));
    }

    std::vector<std::pair<std::string, std::string>> ProgramEnvironment() override { return {}; }

private:
    void AddWindow(const AccessibleNode& node, std::vector<AppWindow>& windows) {
        const NodeStates states = m_bus->States(node);
        if (!states.Has(NodeState::kShowing)) return;
        AppWindow window;
        window.id = IdOf(node);
        window.processId = m_bus->ProcessOf(node);
        window.program = ProgramOf(window.processId);
        window.title = m_bus->Name(node);
        window.isDialog = IsDialogRole(m_bus->Role(node)) || states.Has(NodeState::kModal);
        windows.push_back(std::move(window));
    }

    void AddControlsOf(const AccessibleNode& parent, int depth, std::vector<AppControl>& controls) {
        for (const AccessibleNode& node : m_bus->Children(parent)) {
            if (--m_nodesLeft < 0 || Clock::now() >= m_deadline) return;
            const NodeStates states = m_bus->States(node);
            if (!states.Has(NodeState::kShowing)) continue;
            const std::uint32_t role = m_bus->Role(node);
            const ControlRole controlRole = ControlRoleOf(role, states.Has(NodeState::kEditable));
            if (controlRole == ControlRole::kOther) {
                if (!IsBulkRole(role) && depth < kMostDepth) AddControlsOf(node, depth + 1, controls);
            } else if (states.Has(NodeState::kEnabled)) {
                const bool isDefault =
                    controlRole == ControlRole::kButton && states.Has(NodeState::kIsDefault);
                controls.push_back({IdOf(node), controlRole, 0, m_bus->Label(node), isDefault});
            }
        }
    }

    std::unique_ptr<AccessibilityBus> m_bus;
    int m_nodesLeft = 0;
    Clock::time_point m_deadline;
};

}  // namespace

std::unique_ptr<AppWindows> MakeDesktopWindows() {
    std::unique_ptr<AccessibilityBus> bus = AccessibilityBus::Open();
    if (!bus) return nullptr;
    return std::make_unique<DesktopWindows>(std::move(bus));
}

}  // namespace quirepress
