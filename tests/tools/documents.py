"""Makes the PDF documents that the tests compare."""

from PIL import Image, ImageDraw, ImageFont

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


def document(*pages, box="0 0 300 200", date="2024", trailer="", count=None):
    """A PDF document; each page is a list of (x, y, text) or of drawing operators."""
    kids = " ".join(f"{4 + 2 * index} 0 R" for index in range(len(pages)))
    objects = ["<< /Type /Catalog /Pages 2 0 R >>", f"<< /Type /Pages /Kids [{kids}] /Count {count or len(pages)} >>",
               "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"]
    for index, page in enumerate(pages):
        content = "\n".join(item if isinstance(item, str) else "BT /F 12 Tf %s %s Td (%s) Tj ET" % item
                            for item in page)
        objects += [f"<< /Type /Page /Parent 2 0 R /MediaBox [{box}] /Contents {5 + 2 * index} 0 R"
                    " /Resources << /Font << /F 3 0 R >> >> >>",
                    f"<< /Length {len(content)} >>\nstream\n{content}\nendstream"]
    objects.append(f"<< /Producer (p{date}) /CreationDate (D:{date}) >>")
    text, offsets = "%PDF-1.4\n", []
    for number, item in enumerate(objects, 1):
        offsets.append(len(text))
        text += f"{number} 0 obj\n{item}\nendobj\n"
    table = "".join(f"{offset:010} 00000 n \n" for offset in offsets)
    size = len(objects) + 1
    return (f"{text}xref\n0 {size}\n0000000000 65535 f \n{table}trailer\n<< /Size {size} /Root 1 0 R"
            f" /Info {size - 1} 0 R {trailer} >>\nstartxref\n{len(text)}\n%%EOF\n").encode()


def letter(last=(40, 100, "Regards"), **keywords):
    """A document of three pages; `last` stands on the last of them."""
    return document([(20, 150, "Dear"), (60, 150, "reader")], [(20, 150, "Page two")], [last], **keywords)


def password():
    """A trailer entry that asks for a password."""
    return f"/ID [<00> <00>] /Encrypt << /Filter /Standard /V 1 /R 2 /P -4 /O <{'a5' * 32}> /U <{'5a' * 32}> >>"


def picture(lines, scale=4, rim=0):
    """Drawing operators for a scan: a grey picture of the whole page of 300 by 200 points.

    Each line is (x, y, points, text); there are so many pixels a point. The rims of letters,
    which are neither black nor white, are lighter by so much.
    """
    image = Image.new("L", (300 * scale, 200 * scale), 255)
    draw = ImageDraw.Draw(image)
    for x, y, points, text in lines:
        font = ImageFont.truetype(FONT, points * scale)
        draw.text((x * scale, (200 - y) * scale), text, 0, font, anchor="ls")
    data = image.point(lambda level: min(255, level + rim * (0 < level < 255))).tobytes().hex()
    return (f"q 300 0 0 200 0 0 cm BI /W {image.width} /H {image.height} /CS /G /BPC 8 /F /AHx ID {data}> EI Q")


def offering(page="", catalog="", objects=()):
    """A document of two pages with additions to its first page and its catalog; `objects` are numbered from 8 on."""
    plain = letter_of_two().decode("latin-1")
    body = plain[:plain.index("xref\n")].replace("/Type /Catalog", f"/Type /Catalog {catalog}")
    body = body.replace("/Type /Page /Parent", f"/Type /Page {page} /Parent", 1)
    body = body[:body.rindex("8 0 obj")] + "".join(
        f"{number} 0 obj\n{item}\nendobj\n" for number, item in enumerate(objects, 8))
    numbers = [0, *range(1, 8 + len(objects))]
    table = "".join(f"{body.index(f'{number} 0 obj'):010} 00000 n \n" for number in numbers[1:])
    return (f"{body}xref\n0 {len(numbers)}\n0000000000 65535 f \n{table}trailer\n<< /Size {len(numbers)}"
            f" /Root 1 0 R >>\nstartxref\n{len(body)}\n%%EOF\n").encode("latin-1")


def letter_of_two():
    return document([(20, 150, "Dear")], [(20, 150, "Page two")])


def flowing(texts, a_page=10):
    """A document whose lines flow over pages."""
    pages = [texts[start:start + a_page] for start in range(0, len(texts), a_page)]
    return document(*([(20, 180 - 16 * index, text) for index, text in enumerate(page)] for page in pages))
