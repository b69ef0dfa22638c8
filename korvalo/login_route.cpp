#include "login_route.h"

#include "answers.h"
#include "platform/document_building.h"

#include <httplib.h>

namespace korvalo {
namespace {

using mirelo::platform::XmlDocument;
using mirelo::platform::XmlNode;

const User &refusal() {
    static const User refused{
        "", "", std::string(), {{{"Status", "2"}, {"Description", WrongPairText}}}, false};
    return refused;
}

void answerLogin(const Users &users, const httplib::Request &request, httplib::Response &response) {
    // The client sends its text as UTF-8 whatever its declaration says.
    XmlDocument login;
    login.loadXML(request.body);
    const XmlNode username = login.selectSingleNode("/User/Username");
    const XmlNode password = login.selectSingleNode("/User/Password");
    if (login.parseError().errorCode != 0 || !username || !password) {
        AnswerError(response, 400, "Inloggningen kunde inte läsas: ett User-dokument väntades.");
        return;
    }

    const User *found = CheckUser(users, username.text(), password.text());
    const User &user = found != nullptr ? *found : refusal();
    if (user.serverError) {
        AnswerError(response, 500, "Ett internt fel uppstod i Korvalo.");
        return;
    }

    XmlDocument answer;
    const XmlNode root = mirelo::platform::StartDocument(answer, "LoginResponse");
    if (user.signature) {
        root.appendElement("Signature", *user.signature);
    }
    for (const StatusMessage &fields : user.messages) {
        const XmlNode message = root.appendElement("Message");
        for (const MessageField &field : fields) {
            message.appendElement(field.name, field.text);
        }
    }
    AnswerDocument(response, answer);
}

} // namespace

void AddLoginRoute(httplib::Server &server, const Users &users) {
    server.Post("/Public/Mirelo/Login.aspx",
                [&users](const httplib::Request &request, httplib::Response &response) {
                    answerLogin(users, request, response);
                });
}

} // namespace korvalo
