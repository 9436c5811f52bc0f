#include "Printer.h"

#include <cstdio>

namespace desk {
namespace {

using nlohmann::json;

std::string dumpList(const json& list) {
    std::string text;
    for (const json& item : list) {
        if (!text.empty()) {
            text += ", ";
        }
        text += item.dump(-1, ' ', false, json::error_handler_t::replace);
    }
    return text;
}

std::string withoutLineEnd(std::string text) {
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

}  // namespace

Printer::Printer(bool json, std::set<std::string> only) : m_json(json), m_only(std::move(only)) {}

std::string Printer::readable(const json& event) {
    const std::string kind = event.value("event", "");
    if (kind == "lifecycle") {
        return "lifecycle " + event.value("step", "") + " -> " + event["status"].dump();
    }
    if (kind == "return") {
        return "return " + event.value("operation", "") + " -> " + event["status"].dump();
    }
    if (kind == "callback") {
        return "callback " + event.value("client", "") + "." + event.value("callback", "") + "(" +
               dumpList(event["args"]) + ") msgIds " + event["msgIds"].dump() + " transport " +
               event["transport"].dump();
    }
    if (kind == "port") {
        std::string line = "port " + event.value("object", "") + "." +
                           event.value("operation", "") + "(" + dumpList(event["args"]) + ")";
        if (!event["outputs"].empty()) {
            line += " fills " + dumpList(event["outputs"]);
        }
        if (!event["result"].is_null()) {
            line += " -> " + event["result"].dump(-1, ' ', false, json::error_handler_t::replace);
        }
        return line;
    }
    if (kind == "log") {
        return "log " + event["module"].dump() + "/" + event["level"].dump() + " " +
               withoutLineEnd(event.value("text", ""));
    }
    if (kind == "observer") {
        return "observer " + event.value("name", "") + " -> " + event["status"].dump();
    }
    if (kind == "error") {
        return "error line " + event["line"].dump() + ": " + event.value("message", "");
    }
    if (kind == "help") {
        return event.value("text", "");
    }
    if (kind == "echo") {
        return "# " + event.value("text", "");
    }
    std::string line = kind;
    for (auto it = event.begin(); it != event.end(); ++it) {
        if (it.key() != "event") {
            line += " " + it.key() + "=" +
                    it.value().dump(-1, ' ', false, json::error_handler_t::replace);
        }
    }
    return line;
}

void Printer::print(const json& event) {
    if (!m_only.empty() && m_only.count(event.value("event", "")) == 0) {
        return;
    }
    const std::string line =
        m_json ? event.dump(-1, ' ', false, json::error_handler_t::replace) : readable(event);
    std::lock_guard<std::mutex> lock(m_mutex);
    std::fputs((line + '\n').c_str(), m_out);
    std::fflush(m_out);
}

bool Printer::prints(const std::string& kind) const {
    return m_only.empty() || m_only.count(kind) != 0;
}

void Printer::setOutput(FILE* out) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_out = out;
}

}  // namespace desk
