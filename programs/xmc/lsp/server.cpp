#include "xmc/lsp/server.hpp"

#include "support/text_file.hpp"
#include "xmc/lsp/uri.hpp"
#include "xmc/version.hpp"

#include <algorithm>
#include <exception>
#include <map>
#include <utility>
#include <vector>

// From bytes to a response:
//
//     receive      frames, parsed and queued; a cancellation marks what is queued already
//     handle       a request, a notification, or a response, which nobody waits for
//     result_of    the state allows the request; its function finds the document and the place
//     features     do the work
//
// Every request gets exactly one response. Whatever is raised on the way becomes an error response,
// or a line in the client's log for a notification.

namespace tova_programs::xmc::lsp {

namespace {

const int log_level_error = 1;

const char watched[] = "**/*.{xmc,xml,XMC,XML}";

// The words after the library's own mark: "[json.exception.out_of_range.403] key 'uri' not found".
std::string words_of(const json::exception& error) {
    const std::string text = error.what();
    const auto end = text.find("] ");
    return end == text.npos ? text : text.substr(end + 2);
}

}  // namespace

server::server(check_options options, send_function send)
    : m_send(std::move(send)), m_files(std::move(options)) {}

// --- Messages ---

void server::receive(std::string_view bytes) {
    m_frames.add(bytes);
    for (frame taken; m_frames.next(taken);)
        enqueue(taken);
}

void server::enqueue(const frame& taken) {
    queued fresh;
    if (taken.is_error) {
        fresh.error = "no frame: " + taken.text;
    } else {
        fresh.message = json::parse(taken.text, nullptr, false);
        if (fresh.message.is_discarded())
            fresh.error = "the content is no JSON in UTF-8";
    }
    const json* const method = fresh.message.is_object() && fresh.message.contains("method")
                                   ? &fresh.message["method"]
                                   : nullptr;
    if (method != nullptr && *method == "$/cancelRequest" && fresh.message.contains("params"))
        cancel(fresh.message["params"]);
    else
        m_queue.push_back(std::move(fresh));
}

void server::cancel(const json& params) {
    if (!params.is_object() || !params.contains("id"))
        return;
    for (queued& each : m_queue)
        if (each.message.is_object() && each.message.contains("id") &&
            each.message.contains("method") && each.message["id"] == params["id"])
            each.is_cancelled = true;
}

bool server::handle_next() {
    if (m_queue.empty() || m_has_ended)
        return false;
    const queued next = std::move(m_queue.front());
    m_queue.pop_front();
    if (!next.error.empty())
        respond_error(nullptr, parse_error, next.error);
    else if (next.is_cancelled)
        respond_error(next.message["id"], request_cancelled, "the request was cancelled");
    else
        handle(next.message);
    return true;
}

void server::handle(const json& message) {
    const bool is_object = message.is_object();
    const bool has_id = is_object && message.contains("id");
    const json id = has_id ? message["id"] : json();
    const bool is_valid_id = id.is_string() || id.is_number_integer();
    if (is_object && !message.contains("method") && has_id &&
        (message.contains("result") || message.contains("error")))
        return;
    const json params = is_object && message.contains("params") ? message["params"] : json();
    if (!is_object || !message.contains("method") || !message["method"].is_string() ||
        message.value("jsonrpc", json()) != "2.0" || (has_id && !is_valid_id)) {
        respond_error(is_valid_id ? id : json(), invalid_request,
                      "a message is an object with \"jsonrpc\": \"2.0\", a method, and an id that "
                      "is a string or an integer");
        return;
    }
    const std::string method = message["method"];
    if (has_id)
        handle_request(id, method, params);
    else
        handle_notification(method, params);
}

void server::handle_request(const json& id, const std::string& method, const json& params) {
    try {
        json result = result_of(method, params);
        send({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
    } catch (const response_error& error) {
        respond_error(id, error.code(), error.what());
    } catch (const json::exception& error) {
        respond_error(id, invalid_params, method + ": " + words_of(error));
    } catch (const std::exception& error) {
        respond_error(id, internal_error, method + ": " + error.what());
    }
}

json server::result_of(const std::string& method, const json& params) {
    const bool is_first = method == "initialize";
    if (m_state == state::uninitialized && !is_first)
        throw response_error(server_not_initialized, method + " before initialize");
    if (m_state == state::shut_down)
        throw response_error(invalid_request, method + " after shutdown");
    if (m_state == state::running && is_first)
        throw response_error(invalid_request, "a second initialize");
    const request handler = request_of(method);
    if (handler == nullptr)
        throw response_error(method_not_found, "unknown method " + method);
    return (this->*handler)(params);
}

void server::handle_notification(const std::string& method, const json& params) {
    if (method == "exit") {
        m_has_ended = true;
        return;
    }
    const notification handler = notification_of(method);
    if (m_state != state::running || handler == nullptr)
        return;
    try {
        (this->*handler)(params);
    } catch (const json::exception& error) {
        log_error(method + ": " + words_of(error));
    } catch (const std::exception& error) {
        log_error(method + ": " + error.what());
    }
}

void server::send(const json& message) {
    m_send(message.dump(-1, ' ', false, json::error_handler_t::replace));
}

void server::respond_error(const json& id, error_code code, const std::string& text) {
    send({{"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", int(code)}, {"message", text}}}});
}

void server::notify(const char* method, json params) {
    send({{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}});
}

void server::log_error(const std::string& text) {
    notify("window/logMessage", {{"type", log_level_error}, {"message", "tova-xmc: " + text}});
}

server::request server::request_of(const std::string& method) {
    static const std::map<std::string, request> requests = {
        {"initialize", &server::initialize},
        {"shutdown", &server::shut_down},
        {"textDocument/completion", &server::complete},
        {"textDocument/hover", &server::show_hover},
        {"textDocument/definition", &server::find_definition},
        {"textDocument/references", &server::find_references},
        {"textDocument/documentSymbol", &server::list_symbols},
        {"textDocument/codeAction", &server::list_actions},
        {"textDocument/formatting", &server::format},
    };
    const auto found = requests.find(method);
    return found == requests.end() ? nullptr : found->second;
}

server::notification server::notification_of(const std::string& method) {
    static const std::map<std::string, notification> notifications = {
        {"initialized", &server::initialized},
        {"textDocument/didOpen", &server::open},
        {"textDocument/didChange", &server::change},
        {"textDocument/didSave", &server::save},
        {"textDocument/didClose", &server::close},
        {"workspace/didChangeWorkspaceFolders", &server::change_folders},
        {"workspace/didChangeWatchedFiles", &server::change_files},
    };
    const auto found = notifications.find(method);
    return found == notifications.end() ? nullptr : found->second;
}

// --- The life of a server ---

json server::initialize(const json& params) {
    if (!params.is_object())
        throw response_error(invalid_params, "initialize: parameters are an object");
    m_client = client_features(params);
    const json folders = params.value("workspaceFolders", json());
    if (folders.is_array())
        for (const json& each : folders)
            m_files.add_folder(path_of(each.at("uri").get<std::string>()));
    else if (params.value("rootUri", json()).is_string())
        m_files.add_folder(path_of(params["rootUri"].get<std::string>()));
    m_state = state::running;
    const json sync = {{"openClose", true}, {"change", 2}, {"save", {{"includeText", false}}}};
    const json actions = {{"codeActionKinds", {"quickfix", "source.fixAll.tova-xmc"}}};
    const json folder_support = {{"supported", true}, {"changeNotifications", true}};
    const json capabilities = {
        {"positionEncoding", m_client.units == encoding::utf8 ? "utf-8" : "utf-16"},
        {"textDocumentSync", sync},
        {"completionProvider", {{"triggerCharacters", {"<", "/", " ", "\"", "'"}}}},
        {"hoverProvider", true},
        {"definitionProvider", true},
        {"referencesProvider", true},
        {"documentSymbolProvider", true},
        {"codeActionProvider", m_client.has_code_actions ? actions : json(false)},
        {"documentFormattingProvider", true},
        {"workspace", {{"workspaceFolders", folder_support}}}};
    return {{"capabilities", capabilities},
            {"serverInfo", {{"name", "tova-xmc"}, {"version", version}}}};
}

void server::initialized(const json&) {
    m_is_check_due = true;
    if (!m_client.watches_files)
        return;
    const json options = {{"watchers", json::array({{{"globPattern", watched}}})}};
    const json registration = {{"id", "tova-xmc files"},
                               {"method", "workspace/didChangeWatchedFiles"},
                               {"registerOptions", options}};
    send({{"jsonrpc", "2.0"},
          {"id", "tova-xmc 1"},
          {"method", "client/registerCapability"},
          {"params", {{"registrations", json::array({registration})}}}});
}

json server::shut_down(const json&) {
    m_state = state::shut_down;
    return nullptr;
}

void server::check_if_due() {
    if (!is_check_due())
        return;
    m_is_check_due = false;
    const auto begin = std::chrono::steady_clock::now();
    try {
        const report found = m_files.check();
        m_publisher.publish(found, m_files, m_client, [this](json params) {
            notify("textDocument/publishDiagnostics", std::move(params));
        });
    } catch (const std::exception& error) {
        log_error(error.what());
    }
    const auto taken = std::chrono::steady_clock::now() - begin;
    m_check_delay = std::min(std::chrono::duration_cast<std::chrono::milliseconds>(taken),
                             std::chrono::milliseconds(1000));
}

// --- Documents ---

void server::open(const json& params) {
    const json& document = params.at("textDocument");
    const std::string uri = document.at("uri");
    const std::int64_t opened = document.at("version");
    m_files.open(uri, opened, document.at("text"));
    m_is_check_due = true;
}

// All changes of a notification are made, or none.
void server::change(const json& params) {
    const json& document = params.at("textDocument");
    const std::string uri = document.at("uri");
    const buffer* const open = m_files.find(uri);
    if (open == nullptr)
        throw response_error(invalid_params, uri + " is not open");
    const json version = document.value("version", json());
    std::string text = open->text;
    for (const json& each : params.at("contentChanges")) {
        const std::string fresh = each.at("text");
        if (each.contains("range"))
            replace_range(text, m_client.units, position_of(each["range"].at("start")),
                          position_of(each["range"].at("end")), fresh);
        else
            text = fresh;
    }
    m_files.change(uri, version.is_number_integer() ? version.get<std::int64_t>() : open->version,
                   std::move(text));
    m_is_check_due = true;
}

void server::save(const json&) {
    m_files.forget_disk();
    m_is_check_due = true;
}

void server::close(const json& params) {
    m_files.close(params.at("textDocument").at("uri"));
    m_is_check_due = true;
}

void server::change_folders(const json& params) {
    const json& event = params.at("event");
    for (const json& each : event.at("removed"))
        m_files.remove_folder(path_of(each.at("uri").get<std::string>()));
    for (const json& each : event.at("added"))
        m_files.add_folder(path_of(each.at("uri").get<std::string>()));
    m_is_check_due = true;
}

void server::change_files(const json&) {
    m_files.forget_disk();
    m_is_check_due = true;
}

// --- Requests about a document ---

request_place server::document_at(const json& params) {
    const std::string uri = params.at("textDocument").at("uri");
    document_pointer in = m_files.document_of(uri);
    if (!in)
        throw response_error(invalid_params, uri + " is no document that is open or on the disk");
    return {m_files, m_client, std::move(in), uri, 0};
}

request_place server::place_at(const json& params) {
    request_place result = document_at(params);
    const line_map lines(result.in->file.bytes(), m_client.units);
    result.offset = lines.offset(position_of(params.at("position")));
    return result;
}

json server::complete(const json& params) {
    return completion(place_at(params));
}

json server::show_hover(const json& params) {
    return hover(place_at(params));
}

json server::find_definition(const json& params) {
    return definition(place_at(params));
}

json server::find_references(const json& params) {
    const json context = params.value("context", json::object());
    return references(place_at(params), context.value("includeDeclaration", true));
}

json server::list_symbols(const json& params) {
    return document_symbols(document_at(params));
}

json server::list_actions(const json& params) {
    request_place at = document_at(params);
    const line_map lines(at.in->file.bytes(), m_client.units);
    const json& range = params.at("range");
    at.offset = lines.offset(position_of(range.at("start")));
    const std::size_t end = lines.offset(position_of(range.at("end")));
    return code_actions(at, end, params.at("context").value("only", json()));
}

json server::format(const json& params) {
    return formatting(document_at(params));
}

}  // namespace tova_programs::xmc::lsp
