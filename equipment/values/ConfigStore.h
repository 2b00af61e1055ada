#pragma once

#include "userdata/Document.h"

#include <functional>

#include <nlohmann/json.hpp>

// The document equipment.json, and the values that follow it.

/**
 * Takes the stored document. One that can't be used stays as it is, and System.log has the reason. Once,
 * before a port is opened.
 */
void StartEquipmentValues();

/** The document in the form in which it is sent, never null; one without devices when none is stored. */
CDocument::State EquipmentConfigState();

/**
 * Replaces the document and works by it.
 * @param check  as for CDocument::ReplaceIf; null: it is replaced whatever there is
 * @return the state that is stored now; null when the check failed, and nothing has changed then
 * @throw CConfigProblem  when it can't be used, and nothing has changed then
 */
[[nodiscard]] CDocument::State StoreEquipmentConfig(nlohmann::json document,
                                                    const CDocument::StateCheck& check);

/**
 * Replaces the document together with others, both or neither.
 * @param present  the state that is replaced
 * @param others   called while nobody can replace this document; false: the others were not replaced
 * @return false when another state is stored or `others` gave false; nothing has changed then
 * @throw CConfigProblem  as above
 */
[[nodiscard]] bool StoreEquipmentConfigWith(nlohmann::json document, const CDocument::State& present,
                                            const std::function<bool()>& others);
