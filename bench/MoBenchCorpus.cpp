#include "MoBenchCorpus.h"

#include <cstdint>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <vector>

namespace {

/// A piece of text that occurs with the given weight. In it, %w stands for a word, %s for a few words, %n for an
/// integer, %f for a number with decimals, %e for one with an exponent, %b for a line of base64.
struct Fragment {
    unsigned weight;
    char const* text;
};

struct Format {
    char const* name;
    char const* head;
    std::vector<Fragment> body;
    char const* tail; ///< repeated until the last tenth of the text is filled; empty: the body fills it
};

std::vector<Fragment> const kHtmlBody = {
    {40, "<tr class=\"row\"><td class=\"cell c%n\" style=\"width:%npx\">%f</td><td class=\"cell\">%w %w</td>\n"
         "<td class=\"num\" align=\"right\">%n</td><td class=\"num\" align=\"right\">%f</td></tr>\n"},
    {15, "<tr><td class=\"lbl\" nowrap=\"nowrap\"><span class=\"txt\">%s</span></td><td>&nbsp;</td></tr>\n"},
    {5, "<tr><td ctx=\"%n:%n\" class=\"m\"><a href=\"report?page=%n&amp;q=%w\" onclick=\"drill('%w', "
        "%n);\">%w</a></td></tr>\n"},
    {3, "<div class=\"prompt\" id=\"PRMT_SV_N%n\" onmousemove=\"show(%n)\">%s</div>\n"},
    {3, "<span name=\"f%n\" id=\"n_%n\" class=\"x\">%w</span>\n"},
    {1, "<img name=\"chart%n\" usemap=\"#m%n\" alt=\"%w\" src=\"../bin/images/%w.gif\" border=\"0\"/>\n"
        "<map><area shape=\"rect\" coords=\"%n,%n,%n,%n\" href=\"#\" title=\"%s\">\n"
        "<area shape=\"poly\" coords=\"%n,%n,%n,%n,%n,%n\" href=\"#\" onclick=\"go(%n)\"></map>\n"},
    {1, "<a name=\"next%n\" id=\"next%n\" href=\"#\">%w</a>\n<img src=\"http://%w/%w/bin/%w.png\" alt=\"\">\n"},
    {1, "<script type=\"text/javascript\">\nvar row = %n;\nif (row < %n) { show(\"%w\", %f); "
        "}\nload(\"%w\");\n</script>\n"},
};

std::vector<Fragment> const kMhtBody = {
    {40, "<tr class=3D\"row\"><td class=3D\"cell c%n\" style=3D\"width:%npx\">%f</td><td clas=\n"
         "s=3D\"cell\">%w %w</td><td class=3D\"num\" align=3D\"right\">%n</td><td class=3D\"nu=\n"
         "m\">%f</td></tr>\n"},
    {15, "<tr><td class=3D\"lbl\" nowrap=3D\"nowrap\"><span class=3D\"txt\">%s</span></td><=\n/tr>\n"},
    {3, "<tr><td><a href=3D\"report?page=3D%n&amp;q=3D%w\" onclick=3D\"drill('%w', %n);\">=\n%w</a></td></tr>\n"},
    {1, "<img name=3D\"chart%n\" usemap=3D\"#m%n\" alt=3D\"%w\" border=3D\"0\"/>\n"
        "<img na=\nme=3D\"cha=\nrt%n\" alt=3D\"\"><area shape=3D\"rect\" coords=3D\"%n,%n,%n,%n\" href=3D\"#\">\n"},
    {1, "<img src=3D\"../bin/images/%w.gif\"><img src=\"http://%w/bin/%w.png\">\n"},
    {1, "<script type=3D\"text/javascript\">\nvar row =3D %n;\nload(\"%w\");\n</script>\n"},
};

std::vector<Fragment> const kXhtmlBody = {
    {40, "<tr class=\"row\"><td class=\"cell\" style=\"width:%npx\">%f</td><td class=\"cell\">%w %w</td></tr>\n"},
    {15, "<p class=\"lbl\"><span class=\"txt\" xml:lang=\"en\">%s</span></p>\n"},
    {2,
     "<img name=\"chart%n\" alt=\"%w\" src=\"%w.gif\"/><area shape=\"rect\" coords=\"%n,%n,%n,%n\" alt=\"%w\"/>\n"},
    {1, "<script type=\"text/javascript\">\n//<![CDATA[\nvar row = %n;\nload(\"%w\");\n//]]>\n</script>\n"},
};

std::vector<Fragment> const kDataXmlBody = {
    {30, "<cell><ref>%n</ref><style>s%n</style><value type=\"xs:double\">%f</value></cell>\n"},
    {10, "<text><name>%w</name><value>%s</value></text>\n"},
    {2, "<area><coord>%n,%n,%n,%n</coord><type>rect</type></area>\n"},
};

std::vector<Fragment> const kRawXmlBody = {
    {30, "<row n=\"%n\"><col type=\"double\">%f</col><col type=\"string\">%w</col></row>\n"},
    {10, "<item caption=\"%s\" level=\"%n\"/>\n"},
    {2, "<map shape=\"rect\" coords=\"%n,%n,%n,%n\" target=\"%w\"/>\n"},
};

std::vector<Fragment> const kXlsBody = {
    {40, "<tr><td class=xl%n x:num=\"%f\">%f</td><td class=xl%n align=right>%n</td><td>%w %w</td></tr>\n"},
    {15, "<tr style='height:%npt'><td colspan=3 class=xl%n>%s</td></tr>\n"},
    {8, "<tr><td class=xl%n x:num=\"%e\">%e</td><td x:num>%e</td></tr>\n"},
    {4, "<col style='mso-width-source:userset;width:%npt;'><x:Data>%n %w</x:Data>\n"},
    {1, "<img src=\"http://%w/webcontent/bin/%w.png\" alt=\"%w\">\n"},
    {1, "<script language=\"JavaScript\">\nvar sheet = %n;\nif (sheet) open(\"%w\");\n</script>\n"},
};

std::vector<Fragment> const kTvdBody = {
    {20, "  point %n x=%f y=%f z=-%f;\n"},
    {10, "  series.setData(\"%w\", [%f, %f, %e, %n, %e]);\n"},
    {10, "  label { text: \"%s\"; font: \"%w\"; size: %n; }\n"},
    {3, "  c%n.removeReference(\"%w\"); c%n.add(\"%w\");\n"},
    {3, "  image \"..\\bin\\%w\" source \"/opt/%w/bin/chart_tmp_%n\" type \"png\";\n"},
};

std::vector<Fragment> const kNumbersBody = {
    {4, "%n\t%f\t-%f\t%f\t%e\t%f\n"},
    {1, "%n\t%e\t%e\t-%e\t%f\t%f\n"},
};

char const kHtmlHead[] = "<html>\n<head>\n<meta name=\"Copyright\" content=\"%s\">\n"
                         "<meta name=\"Trademark\" content=\"%s\">\n<title>%s</title>\n</head>\n<body>\n";
char const kMhtHead[] = "From: %w\nMIME-Version: 1.0\nContent-Type: multipart/related\n\n"
                        "<meta name=\"Copyright\" content=\"%s\">\n<meta name=\"Trademark\" content=\"%s\">\n";
char const kXmlHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<report name=\"%w\">\n";

/// By MoBenchCorpus::Kind.
std::vector<Format> const kFormats = {
    {"html", kHtmlHead, kHtmlBody, ""},
    {"nao", kHtmlHead, kHtmlBody, ""},
    {"mht", kMhtHead, kMhtBody, "\n------=_Part%n\nContent-Type: image/png\n\n%b%b%b%b%b%b%b%b%b%b%b%b"},
    {"xhtml", kXmlHead, kXhtmlBody, ""},
    {"dataxml", kXmlHead, kDataXmlBody, ""},
    {"rawxml", kXmlHead, kRawXmlBody, ""},
    {"xls", kXmlHead, kXlsBody, ""},
    {"xlwa", kMhtHead, kXlsBody, ""},
    {"tvd", "chart \"%w\" {\n", kTvdBody, ""},
    {"numbers", "", kNumbersBody, ""},
};

char const* const kWords[] = {"Revenue", "Margin",  "Order method", "Umsätze",      "Größe",      "Résumé",
                              "日本",    "Camping", "Golf",         "Product line", "quantity",   "total",
                              "Quarter", "on hand", "name",         "the",          "average",    "contract",
                              "script",  "width",   "binding",      "area",         "coordinate", "id"};

class Writer {
public:
    Writer(std::string& text, unsigned seed) : m_text(text), m_random(seed) {}

    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    void write(char const* fragment) {
        for (; *fragment; ++fragment) {
            if (*fragment == '%')
                writePlaceholder(*++fragment);
            else
                m_text += *fragment;
        }
    }

private:
    void writePlaceholder(char kind) {
        switch (kind) {
        case 'w':
            m_text += kWords[below(std::size(kWords))];
            return;
        case 's':
            return write("%w %w %w %n %w %w %w");
        case 'n':
            m_text += std::to_string(below(below(2) ? 100 : 10000));
            return;
        case 'f':
            return writeNumber("%u.%02u", below(100000), below(100));
        case 'e':
            return writeNumber(below(2) ? "%u.%ue+03" : "-%u.%uE-07", 1 + below(9), below(1000000));
        default:
            return writeBase64();
        }
    }

    void writeNumber(char const* format, unsigned whole, unsigned fraction) {
        char number[40];
        std::snprintf(number, sizeof number, format, whole, fraction);
        m_text += number;
    }

    void writeBase64() {
        static char const digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (int i = 0; i < 76; ++i)
            m_text += digits[below(64)];
        m_text += '\n';
    }

    std::string& m_text;
    std::mt19937 m_random;
};

/// Each fragment as often as its weight says, for picking one by chance.
std::vector<char const*> spread(std::vector<Fragment> const& fragments) {
    std::vector<char const*> result;
    for (Fragment const& fragment : fragments)
        result.insert(result.end(), fragment.weight, fragment.text);
    return result;
}

} // namespace

std::string MoBenchCorpus::make(Kind kind, std::size_t size) {
    Format const& format = kFormats[kind];
    std::string text;
    text.reserve(size + 2000);
    Writer writer(text, 1 + static_cast<unsigned>(kind));
    writer.write(format.head);
    std::vector<char const*> const body = spread(format.body);
    std::size_t const bodySize = *format.tail ? size - size / 10 : size;
    while (text.size() < bodySize)
        writer.write(body[writer.below(static_cast<unsigned>(body.size()))]);
    while (text.size() < size)
        writer.write(format.tail);
    return text;
}

MoBenchCorpus::Kind MoBenchCorpus::kindOf(std::string const& name) {
    for (int kind = 0; kind < eKindCount; ++kind) {
        if (name == kFormats[static_cast<std::size_t>(kind)].name)
            return static_cast<Kind>(kind);
    }
    throw std::invalid_argument("no such corpus: " + name);
}
