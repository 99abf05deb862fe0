/// @file
/// A language server for catalogs, without its input and output.
///
///     server one(options, [](const std::string& content) { write(framed(content)); });
///     one.receive(bytes);
///     while (one.handle_next()) {
///     }
///     one.check_if_due();
///
/// What arrives is queued, so that a request can be cancelled before it is handled, and so that
/// many keystrokes lead to one check. An object belongs to one thread.
#pragma once

#include "xmc/lsp/diagnostics.hpp"
#include "xmc/lsp/features.hpp"
#include "xmc/lsp/frames.hpp"
#include "xmc/lsp/workspace.hpp"

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

namespace tova_programs::xmc::lsp {

class server {
public:
    using send_function = std::function<void(const std::string& content)>;

    server(check_options options, send_function send);

    /// Takes bytes of the client's stream.
    void receive(std::string_view bytes);

    /// Handles one message. Returns false if there is none.
    bool handle_next();

    bool has_messages() const { return !m_queue.empty(); }

    /// Whether documents changed since the last check.
    bool is_check_due() const { return m_is_check_due && m_state == state::running; }

    /// Checks and sends what is new, if a check is due.
    void check_if_due();

    /// How long the client should be silent before the next check: as long as the last one took,
    /// within a second.
    std::chrono::milliseconds check_delay() const { return m_check_delay; }

    bool has_ended() const { return m_has_ended; }

    /// 0 if the client has asked for the shutdown, otherwise 1.
    int exit_code() const { return m_state == state::shut_down ? 0 : 1; }

private:
    enum class state { uninitialized, running, shut_down };

    struct queued {
        json message;
        std::string error;  // of bytes that are no message
        bool is_cancelled = false;
    };

    using request = json (server::*)(const json&);
    using notification = void (server::*)(const json&);
    static request request_of(const std::string& method);
    static notification notification_of(const std::string& method);

    void enqueue(const frame& taken);
    void cancel(const json& params);
    void handle(const json& message);
    void handle_request(const json& id, const std::string& method, const json& params);
    json result_of(const std::string& method, const json& params);
    void handle_notification(const std::string& method, const json& params);

    void send(const json& message);
    void respond_error(const json& id, error_code code, const std::string& text);
    void notify(const char* method, json params);
    void log_error(const std::string& text);

    json initialize(const json& params);
    json shut_down(const json& params);
    json complete(const json& params);
    json show_hover(const json& params);
    json find_definition(const json& params);
    json find_references(const json& params);
    json list_symbols(const json& params);
    json list_actions(const json& params);
    json format(const json& params);

    void initialized(const json& params);
    void open(const json& params);
    void change(const json& params);
    void save(const json& params);
    void close(const json& params);
    void change_folders(const json& params);
    void change_files(const json& params);

    request_place document_at(const json& params);
    request_place place_at(const json& params);

    send_function m_send;
    state m_state = state::uninitialized;
    bool m_has_ended = false;
    frame_reader m_frames;
    std::deque<queued> m_queue;
    client_features m_client;
    workspace m_files;
    publisher m_publisher;
    bool m_is_check_due = false;
    std::chrono::milliseconds m_check_delay{0};
};

}  // namespace tova_programs::xmc::lsp
