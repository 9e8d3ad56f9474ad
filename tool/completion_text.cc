#include "tool/completion_text.h"

#include "tool/operations.h"

namespace BP::tool {

namespace {

std::string quoted(const std::string& words) { return "words='" + words + "' ;;\n"; }

std::string spaced(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

/// The cases for the values of options and of the first positional argument.
std::string valueCases(const Operation& operation) {
  std::string cases;
  for (const Option& option : operation.options) {
    if (option.isFlag()) continue;
    const std::string before = option.isPositional() ? operation.name : option.name;
    if (!option.allowed.empty()) {
      cases += "    '" + operation.name + " " + before + "') " + quoted(spaced(option.allowed));
    } else if (!option.isPositional()) {
      cases += "    '" + operation.name + " " + before + "') ;;\n";  // bash offers files
    }
  }
  return cases;
}

}  // namespace

std::string bashCompletion() {
  std::vector<std::string> names;
  std::string values, options;
  for (const Operation& operation : operations()) {
    names.push_back(operation.name);
    values += valueCases(operation);
    std::vector<std::string> own = {"--help"};
    for (const Option& option : operation.options) {
      if (!option.isPositional()) own.push_back(option.name);
    }
    options += "    '" + operation.name + " -'*) " + quoted(spaced(own));
  }
  return "# Completion of the command orvane for bash.\n"
         "_orvane() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=\n"
         "  COMPREPLY=()\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
         "    COMPREPLY=($(compgen -W '" +
         spaced(names) +
         " --help --version' -- \"$word\"))\n"
         "    return\n"
         "  fi\n"
         "  case \"${COMP_WORDS[1]} $before\" in\n" +
         values + "    'help help') words='" + spaced(names) +
         "' ;;\n"
         "    *) case \"${COMP_WORDS[1]} $word\" in\n" +
         options +
         "    esac ;;\n"
         "  esac\n"
         "  [ -z \"$words\" ] || COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
         "}\n"
         "complete -o default -F _orvane orvane\n";
}

}  // namespace BP::tool
