#include "sim/SimObject.h"

#include <stdexcept>

#include "sim/SimSet.h"

namespace sim {

SimObject::SimObject(SimSet& set, const std::string& name, std::vector<OpSpec> operations,
                     std::vector<StateSpec> state, bool canBeAbsent)
    : m_set(set),
      m_name(name),
      m_operations(std::move(operations)),
      m_stateSpecs(std::move(state)),
      m_canBeAbsent(canBeAbsent) {
    reset();
}

SimObject::~SimObject() = default;

bool SimObject::isPresent() const {
    std::lock_guard<std::recursive_mutex> lock(m_set.mutex());
    return m_present;
}

void SimObject::setPresent(bool present) {
    std::lock_guard<std::recursive_mutex> lock(m_set.mutex());
    m_present = present;
}

const OpSpec* SimObject::findOperation(const std::string& name) const {
    for (const OpSpec& op : m_operations) {
        if (op.name == name) {
            return &op;
        }
    }
    return nullptr;
}

bool SimObject::knowsOperation(const std::string& operation, std::string& error) const {
    if (findOperation(operation) == nullptr) {
        error = m_name + " has no operation " + operation;
        return false;
    }
    return true;
}

bool SimObject::setAnswer(const std::string& operation, const json& result, const json& outputs,
                          std::string& error) {
    const OpSpec* op = findOperation(operation);
    if (op == nullptr) {
        error = m_name + " has no operation " + operation;
        return false;
    }
    if (op->result == Kind::Object) {
        return fitsKind(Kind::Object, result, error);
    }
    if (!result.is_null() && !fitsKind(op->result, result, error)) {
        error = m_name + "." + operation + " result: " + error;
        return false;
    }
    if (!outputs.is_array()) {
        error = "outputs must be a list";
        return false;
    }
    if (outputs.size() > op->outputs.size()) {
        error = m_name + "." + operation + " fills in " + std::to_string(op->outputs.size()) +
                " value(s), not " + std::to_string(outputs.size());
        return false;
    }
    for (size_t i = 0; i < outputs.size(); ++i) {
        if (!outputs[i].is_null() && !fitsKind(op->outputs[i], outputs[i], error)) {
            error = m_name + "." + operation + " output " + std::to_string(i + 1) + ": " + error;
            return false;
        }
    }
    std::lock_guard<std::recursive_mutex> lock(m_set.mutex());
    m_answers[operation] = Answer{result, outputs, std::string()};
    return true;
}

bool SimObject::clearAnswer(const std::string& operation, std::string& error) {
    if (!knowsOperation(operation, error)) {
        return false;
    }
    std::lock_guard<std::recursive_mutex> lock(m_set.mutex());
    m_answers.erase(operation);
    return true;
}

bool SimObject::setThrow(const std::string& operation, const std::string& what,
                         std::string& error) {
    if (!knowsOperation(operation, error)) {
        return false;
    }
    std::lock_guard<std::recursive_mutex> lock(m_set.mutex());
    Answer answer;
    answer.raise = what.empty() ? std::string("simulated failure") : what;
    m_answers[operation] = answer;
    return true;
}

bool SimObject::setState(const std::string& key, const json& value, std::string& error) {
    for (const StateSpec& entry : m_stateSpecs) {
        if (entry.key != key) {
            continue;
        }
        if (!fitsKind(entry.kind, value, error)) {
            error = m_name + "." + key + ": " + error;
            return false;
        }
        std::lock_guard<std::recursive_mutex> lock(m_set.mutex());
        m_state[key] = value;
        return true;
    }
    error = m_name + " has no state " + key;
    return false;
}

json SimObject::getState(const std::string& key) const {
    std::lock_guard<std::recursive_mutex> lock(m_set.mutex());
    return m_state.contains(key) ? m_state[key] : json();
}

void SimObject::reset() {
    std::lock_guard<std::recursive_mutex> lock(m_set.mutex());
    m_state = json::object();
    for (const StateSpec& entry : m_stateSpecs) {
        m_state[entry.key] = entry.initial;
    }
    m_answers.clear();
}

json& SimObject::state(const std::string& key) {
    return m_state[key];
}

SimObject::Call::Call(SimObject& object, const char* operation, json args)
    : m_object(object),
      m_lock(object.m_set.mutex()),
      m_operation(operation),
      m_args(std::move(args)) {
    const auto found = object.m_answers.find(m_operation);
    if (found != object.m_answers.end()) {
        m_answer = found->second;
        m_answered = true;
    }
    if (!m_answer.raise.empty()) {
        throw std::runtime_error(m_answer.raise);
    }
}

SimObject::Call::~Call() {
    if (!m_finished) {
        finish(json());
    }
}

const json* SimObject::Call::scriptedOutput() const {
    const size_t index = m_outputs.size();
    if (!m_answered || index >= m_answer.outputs.size() || m_answer.outputs[index].is_null()) {
        return nullptr;
    }
    return &m_answer.outputs[index];
}

bool SimObject::Call::hasScriptedOutput() const {
    return scriptedOutput() != nullptr;
}

bool SimObject::Call::hasScriptedResult() const {
    return m_answered && !m_answer.result.is_null();
}

void SimObject::Call::done(json result) {
    finish(std::move(result));
}

void SimObject::Call::finish(json result) {
    m_finished = true;
    m_object.m_set.record(PortCall{m_object.m_name, m_operation, m_args, m_outputs, result});
}

}  // namespace sim
