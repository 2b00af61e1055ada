#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

/** An interface that commands use, but which does not exist any more. */
struct SMissingInterface {
    std::int32_t nodeId = 0;  ///< its id at that time
    std::string name;
};

/**
 * Makes the commands of an earlier time fit the interfaces of now, since an id may have gone to other
 * equipment. A command keeps its id when the interface of this id is of the same kind and still has the name
 * or the settings of that time. Otherwise it gets the id of the only interface of the same kind and name. If
 * there is none, it gets the negative of its id, which no interface ever has. Any thread.
 * @param commands  the document of the component interactions; each "portIndex" in it is changed
 * @param then      the interfaces of that time, a document of the form of interFace.json
 * @param now       the present ones
 * @return the interfaces that are missing now, in the order of the commands, each once
 */
std::vector<SMissingInterface> FitCommands(nlohmann::json& commands, const nlohmann::json& then,
                                           const nlohmann::json& now);

/**
 * The same for the devices of equipment.json, whose interface is known by the list of that time alone. One of
 * an interface that is missing now gets the negative of its id too, and is ignored until somebody changes it.
 */
void FitDevices(nlohmann::json& equipment, const nlohmann::json& then, const nlohmann::json& now);
