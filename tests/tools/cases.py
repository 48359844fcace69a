"""Files of cases: lines that begin with a word, and the text of the word from column 10 on."""


def cases(path):
    """The cases one by one: for each word its texts. A case begins with the word `read`."""
    case = {}
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("#") or not line.strip():
                continue
            word, text = line[:8].rstrip(), line[9:].rstrip("\n")
            if word == "read" and case:
                yield case
                case = {}
            case.setdefault(word, []).append(text)
    yield case
