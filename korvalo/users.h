#pragma once

#include <optional>
#include <string>
#include <vector>

namespace korvalo {

// One child element of a status message, kept as written so that a users file can also
// describe answers that lack a Status or a Description.
struct MessageField {
    std::string name;
    std::string text;
};
using StatusMessage = std::vector<MessageField>;

// A user the service knows and what it answers when that user logs in with the right
// password: the signature (none when the file has no Signature element), the status messages
// in order, or an error page with status 500.
struct User {
    std::string username;
    std::string password;
    std::optional<std::string> signature;
    std::vector<StatusMessage> messages;
    bool serverError = false;
};

using Users = std::vector<User>;

// The users file:
//   <Users>
//     <User>
//       <Username>demo</Username> <Password>demo123</Password> <Signature>...</Signature>
//       <Message><Status>0</Status><Description>...</Description></Message> ...
//       <Answer>error</Answer>   (optional: an HTML page with status 500 instead)
//     </User> ...
//   </Users>
// Throws std::runtime_error naming the file when it can't be read.
Users LoadUsers(const std::string &path);

// The user that is there out of the box: demo / demo123.
Users DemoUsers();

// The user with this name and this password, or null: a wrong pair is refused alike
// whichever half of it is wrong.
const User *CheckUser(const Users &users, const std::string &username, const std::string &password);

// What the service answers a wrong pair with, at the login and on the hand-over page.
inline constexpr const char *WrongPairText = "Felaktigt användarnamn eller lösenord.";

// The name a user prescribes under: the signature, or the user name when there is none.
std::string PrescriberName(const User &user);

} // namespace korvalo
