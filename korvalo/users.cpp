#include "users.h"

#include "platform/xml_document.h"

#include <stdexcept>

namespace korvalo {
namespace {

using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

constexpr const char *DemoUsersText = R"(<?xml version="1.0" encoding="ISO-8859-1"?>
<Users>
  <User>
    <Username>demo</Username>
    <Password>demo123</Password>
    <Signature>Dr. Karin Lindqvist, Vårdcentralen Åby</Signature>
    <Message>
      <Status>0</Status>
      <Description>Välkommen till Korvalo.</Description>
    </Message>
  </User>
</Users>
)";

std::string childText(const XmlNode &user, const char *name) {
    const XmlNode node = user.selectSingleNode(name);
    if (!node) {
        throw std::runtime_error(std::string("en användare saknar ") + name);
    }
    return node.text();
}

Users readUsers(const XmlDocument &document) {
    Users users;
    for (const XmlNode &node : document.selectNodes("/Users/User")) {
        User user;
        user.username = childText(node, "Username");
        user.password = childText(node, "Password");
        if (const XmlNode signature = node.selectSingleNode("Signature")) {
            user.signature = signature.text();
        }
        for (const XmlNode &message : node.selectNodes("Message")) {
            StatusMessage fields;
            for (const XmlNode &field : message.selectNodes("*")) {
                fields.push_back({field.nodeName(), field.text()});
            }
            user.messages.push_back(std::move(fields));
        }
        if (const XmlNode answer = node.selectSingleNode("Answer")) {
            user.serverError = answer.text() == "error";
        }
        users.push_back(std::move(user));
    }
    return users;
}

} // namespace

Users LoadUsers(const std::string &path) {
    XmlDocument document;
    document.setAsync(false);
    document.load(path);
    if (document.parseError().errorCode != 0) {
        throw std::runtime_error("användarfilen " + path +
                                 " kunde inte läsas: " + document.parseError().reason);
    }
    try {
        return readUsers(document);
    } catch (const std::runtime_error &error) {
        throw std::runtime_error("användarfilen " + path + ": " + error.what());
    }
}

Users DemoUsers() {
    XmlDocument document;
    document.loadXML(DemoUsersText);
    return readUsers(document);
}

const User *CheckUser(const Users &users, const std::string &username,
                      const std::string &password) {
    for (const User &user : users) {
        if (user.username == username) {
            return user.password == password ? &user : nullptr;
        }
    }
    return nullptr;
}

std::string PrescriberName(const User &user) {
    return user.signature && !user.signature->empty() ? *user.signature : user.username;
}

} // namespace korvalo
