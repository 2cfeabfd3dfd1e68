#include "platform/linux/desktop/accessibility_bus.h"

namespace quirepress {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCallMilliseconds = 500;
constexpr std::chrono::seconds kSilentPause{5};

constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
constexpr const char* kRegistry = "org.a11y.atspi.Registry";

bool IsSilence(const GError* error) {
    return g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE ||
           g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY) != FALSE;
}

std::string AskForAddress() {
    GDBusConnection* const session = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (session == nullptr) return {};
    // The bus is started when it is asked for the first time.
    constexpr int kStartMilliseconds = 1'500;
    GVariant* const reply = g_dbus_connection_call_sync(
        session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr,
        G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, kStartMilliseconds, nullptr, nullptr);
    g_object_unref(session);
    if (reply == nullptr) return {};
    const char* address = nullptr;
    g_variant_get(reply, "(&s)", &address);
    std::string copy = address;
    g_variant_unref(reply);
    return copy;
}

AccessibleNode RootOf(const char* program) {
    return {program, "/org/a11y/atspi/accessible/root"};
}

}  // namespace

std::unique_ptr<AccessibilityBus> AccessibilityBus::Open() {
    const std::string address = AskForAddress();
    if (address.empty()) return nullptr;
    const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    Connection connection(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr));
    if (!connection) return nullptr;
    return std::unique_ptr<AccessibilityBus>(new AccessibilityBus(std::move(connection)));
}

AccessibilityBus::Value AccessibilityBus::Call(const AccessibleNode& node, const char* interface,
                                               const char* method, GVariant* arguments,
                                               const char* replyForm) {
    const Value owned(arguments == nullptr ? nullptr : g_variant_ref_sink(arguments));
    const auto silent = m_silent.find(node.program);
    if (silent != m_silent.end() && Clock::now() < silent->second) return nullptr;
    if (g_dbus_is_name(node.program.c_str()) == FALSE || g_variant_is_object_path(node.path.c_str()) == FALSE)
        return nullptr;
    GError* error = nullptr;
    Value reply(g_dbus_connection_call_sync(
        m_connection.get(), node.program.c_str(), node.path.c_str(), interface, method, owned.get(),
        G_VARIANT_TYPE(replyForm), G_DBUS_CALL_FLAGS_NO_AUTO_START, kCallMilliseconds, nullptr, &error));
    if (error != nullptr) {
        if (IsSilence(error)) m_silent[node.program] = Clock::now() + kSilentPause;
        g_error_free(error);
    }
    return reply;
}

bool AccessibilityBus::IsGranted(const AccessibleNode& node, const char* interface, const char* method,
                                 GVariant* arguments) {
    const Value reply = Call(node, interface, method, arguments, "(b)");
    gboolean isGranted = FALSE;
    if (reply) g_variant_get(reply.get(), "(b)", &isGranted);
    return isGranted != FALSE;
}

std::vector<AccessibleNode> AccessibilityBus::Programs() {
    return Children(RootOf(kRegistry));
}

std::vector<AccessibleNode> AccessibilityBus::Children(const AccessibleNode& node) {
    std::vector<AccessibleNode> children;
    const Value reply = Call(node, kAccessible, "GetChildren", nullptr, "(a(so))");
    if (!reply) return children;
    GVariantIter* iterator = nullptr;
    g_variant_get(reply.get(), "(a(so))", &iterator);
    const char* program = nullptr;
    const char* path = nullptr;
    while (g_variant_iter_next(iterator, "(&s&o)", &program, &path) != FALSE)
        children.push_back({program, path});
    g_variant_iter_free(iterator);
    return children;
}

std::string AccessibilityBus::Name(const AccessibleNode& node) {
    const Value reply = Call(node, "org.freedesktop.DBus.Properties", "Get",
                             g_variant_new("(ss)", kAccessible, "Name"), "(v)");
    if (!reply) return {};
    GVariant* boxed = nullptr;
    g_variant_get(reply.get(), "(v)", &boxed);
    const Value value(boxed);
    return g_variant_is_of_type(boxed, G_VARIANT_TYPE_STRING) != FALSE ? g_variant_get_string(boxed, nullptr)
                                                                       : std::string();
}

std::string AccessibilityBus::Label(const AccessibleNode& node) {
    std::string name = Name(node);
    if (!name.empty()) return name;
    constexpr guint32 kLabelledBy = 2;
    const Value reply = Call(node, kAccessible, "GetRelationSet", nullptr, "(a(ua(so)))");
    if (!reply) return {};
    GVariantIter* relations = nullptr;
    g_variant_get(reply.get(), "(a(ua(so)))", &relations);
    guint32 kind = 0;
    GVariantIter* targets = nullptr;
    AccessibleNode label;
    while (g_variant_iter_next(relations, "(ua(so))", &kind, &targets) != FALSE) {
        const char* program = nullptr;
        const char* path = nullptr;
        if (kind == kLabelledBy && g_variant_iter_next(targets, "(&s&o)", &program, &path) != FALSE)
            label = {program, path};
        g_variant_iter_free(targets);
    }
    g_variant_iter_free(relations);
    return label.path.empty() ? std::string() : Name(label);
}

std::uint32_t AccessibilityBus::Role(const AccessibleNode& node) {
    const Value reply = Call(node, kAccessible, "GetRole", nullptr, "(u)");
    guint32 role = 0;
    if (reply) g_variant_get(reply.get(), "(u)", &role);
    return role;
}

NodeStates AccessibilityBus::States(const AccessibleNode& node) {
    constexpr int kBitsOfAWord = 32;
    const Value reply = Call(node, kAccessible, "GetState", nullptr, "(au)");
    if (!reply) return NodeStates();
    GVariantIter* words = nullptr;
    g_variant_get(reply.get(), "(au)", &words);
    std::uint64_t bits = 0;
    guint32 word = 0;
    for (int shift = 0; shift <= kBitsOfAWord && g_variant_iter_next(words, "u", &word) != FALSE;
         shift += kBitsOfAWord)
        bits |= std::uint64_t{word} << shift;
    g_variant_iter_free(words);
    return NodeStates(bits);
}

std::int64_t AccessibilityBus::ProcessOf(const AccessibleNode& node) {
    const AccessibleNode bus = {"org.freedesktop.DBus", "/org/freedesktop/DBus"};
    const Value reply = Call(bus, "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                             g_variant_new("(s)", node.program.c_str()), "(u)");
    guint32 id = 0;
    if (reply) g_variant_get(reply.get(), "(u)", &id);
    return id;
}

bool AccessibilityBus::DoFirstAction(const AccessibleNode& node) {
    return IsGranted(node, "org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", 0));
}

bool AccessibilityBus::SetText(const AccessibleNode& node, const std::string& text) {
    if (g_utf8_validate(text.c_str(), static_cast<gssize>(text.size()), nullptr) == FALSE) return false;
    return IsGranted(node, "org.a11y.atspi.EditableText", "SetTextContents",
                     g_variant_new("(s)", text.c_str()));
}

bool AccessibilityBus::SendKey(std::int32_t keySymbol) {
    constexpr guint32 kPressAndRelease = 3;  // of a symbol
    const AccessibleNode devices = {kRegistry, "/org/a11y/atspi/registry/deviceeventcontroller"};
    return Call(devices, "org.a11y.atspi.DeviceEventController", "GenerateKeyboardEvent",
                g_variant_new("(isu)", keySymbol, "", kPressAndRelease), "()") != nullptr;
}

}  // namespace quirepress
