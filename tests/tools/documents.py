"""Makes the PDF documents that the tests compare."""


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
