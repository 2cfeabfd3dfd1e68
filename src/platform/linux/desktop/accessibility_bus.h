#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quirepress {

// The part that a node plays, and its states, as the bus numbers them (org.a11y.atspi).
namespace node_role {
constexpr std::uint32_t kAlert = 2, kColorChooser = 9, kComboBox = 11, kDialog = 16, kFileChooser = 19,
                        kFontChooser = 22, kLabel = 29, kList = 31, kMenu = 33, kMenuBar = 34,
                        kPasswordText = 40, kPushButton = 43, kTable = 55, kText = 61, kTree = 65,
                        kTreeTable = 66, kEntry = 79, kDocumentFrame = 82, kDocumentWeb = 95, kListBox = 98;
}
enum class NodeState {
    kActive = 1,
    kEditable = 7,
    kEnabled = 8,
    kModal = 16,
    kShowing = 25,
    kIsDefault = 39
};

// A node of what a program shows: its windows, and what is in them.
struct AccessibleNode {
    std::string program;  // its name on the bus
    std::string path;
};

class NodeStates {
public:
    explicit NodeStates(std::uint64_t bits = 0) : m_bits(bits) {}
    bool Has(NodeState state) const { return (m_bits >> static_cast<int>(state) & 1) != 0; }

private:
    std::uint64_t m_bits;
};

// The bus on which the programs of a desktop tell what they show (AT-SPI). Each call asks one program one
// question and waits half a second for its answer; a program that has none is not asked again for some
// seconds. What was not answered is empty.
class AccessibilityBus {
public:
    static std::unique_ptr<AccessibilityBus> Open();  // null where there is none

    std::vector<AccessibleNode> Programs();
    std::vector<AccessibleNode> Children(const AccessibleNode& node);
    std::string Name(const AccessibleNode& node);
    std::string Label(const AccessibleNode& node);  // its name, else that of the label that belongs to it
    std::uint32_t Role(const AccessibleNode& node);
    NodeStates States(const AccessibleNode& node);
    std::int64_t ProcessOf(const AccessibleNode& node);  // 0: not known
    bool DoFirstAction(const AccessibleNode& node);
    bool SetText(const AccessibleNode& node, const std::string& text);
    bool SendKey(std::int32_t keySymbol);  // to the window that has the user's attention

private:
    struct ConnectionRelease {
        void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
    };
    using Connection = std::unique_ptr<GDBusConnection, ConnectionRelease>;
    struct ValueRelease {
        void operator()(GVariant* value) const { g_variant_unref(value); }
    };
    using Value = std::unique_ptr<GVariant, ValueRelease>;

    explicit AccessibilityBus(Connection connection) : m_connection(std::move(connection)) {}
    Value Call(const AccessibleNode& node, const char* interface, const char* method, GVariant* arguments,
               const char* replyForm);
    bool IsGranted(const AccessibleNode& node, const char* interface, const char* method,
                   GVariant* arguments);

    Connection m_connection;
    std::map<std::string, std::chrono::steady_clock::time_point> m_silent;  // until when
};

}  // namespace quirepress
