// The Fast Infoset tests' independent peer: the Java codec of Debian's
// libfastinfoset-java reads what we write and writes what we read. One more
// reader of our own (Walker) stands in for the codec where the codec cannot
// go: it takes the prefix of a literal qualified name only if a namespace
// attribute has bound it, and our untyped trees write prefixes that none
// binds.
//
//   canon [--own] IN        the infoset of IN (Fast Infoset if it starts with
//                           the identification or a 'finf' declaration, XML
//                           otherwise), one event a line
//   xml2fi [--stax] [--decl] IN OUT
//                           IN read as XML, written by the codec's SAX (or
//                           StAX) serializer, after <?xml encoding='finf'?>
//   typed [--decl] OUT      a fixed document of typed content by the codec
//   help
//
// Exit codes: 0 done, 1 the input is refused, 2 usage, 3 a file, 5 internal.

import com.sun.xml.fastinfoset.algorithm.BuiltInEncodingAlgorithmFactory;
import com.sun.xml.fastinfoset.alphabet.BuiltInRestrictedAlphabets;
import com.sun.xml.fastinfoset.sax.SAXDocumentParser;
import com.sun.xml.fastinfoset.sax.SAXDocumentSerializer;
import com.sun.xml.fastinfoset.stax.StAXDocumentSerializer;
import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Paths;
import java.util.ArrayDeque;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Deque;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.UUID;
import javax.xml.parsers.SAXParserFactory;
import javax.xml.stream.XMLStreamException;
import javax.xml.stream.XMLStreamWriter;
import org.jvnet.fastinfoset.EncodingAlgorithmIndexes;
import org.jvnet.fastinfoset.RestrictedAlphabet;
import org.jvnet.fastinfoset.sax.helpers.EncodingAlgorithmAttributesImpl;
import org.xml.sax.Attributes;
import org.xml.sax.ContentHandler;
import org.xml.sax.InputSource;
import org.xml.sax.SAXException;
import org.xml.sax.XMLReader;
import org.xml.sax.ext.LexicalHandler;
import org.xml.sax.helpers.AttributesImpl;
import org.xml.sax.helpers.DefaultHandler;

public final class FiPeer {
    static final String XML_NS = "http://www.w3.org/XML/1998/namespace";
    static final String XMLNS_NS = "http://www.w3.org/2000/xmlns/";
    static final String XSI_NS = "http://www.w3.org/2001/XMLSchema-instance";
    static final String FINF_DECL = "<?xml encoding='finf'?>";

    static final class Failure extends Exception {
        private static final long serialVersionUID = 1L;
        final int code;

        Failure(int code, String message) {
            super(message);
            this.code = code;
        }
    }

    static Failure refused(String what) {
        return new Failure(1, what);
    }

    public static void main(String[] args) {
        int code = 0;
        try {
            run(args);
        } catch (Failure f) {
            System.err.println("FiPeer: " + f.getMessage());
            code = f.code;
        } catch (Exception | StackOverflowError e) {
            e.printStackTrace();
            code = 5;
        }
        System.out.flush();
        System.exit(code);
    }

    static void run(String[] args) throws Exception {
        if (args.length == 0)
            throw new Failure(2, "usage: canon [--own] IN | xml2fi [--stax] [--decl] IN OUT | typed [--decl] OUT");
        List<String> files = new ArrayList<>();
        boolean own = false, stax = false, decl = false;
        for (int i = 1; i < args.length; ++i) {
            switch (args[i]) {
                case "--own": own = true; break;
                case "--stax": stax = true; break;
                case "--decl": decl = true; break;
                default: files.add(args[i]);
            }
        }
        switch (args[0]) {
            case "help":
                System.out.println("canon [--own] IN | xml2fi [--stax] [--decl] IN OUT | typed [--decl] OUT");
                return;
            case "canon":
                want(files, 1);
                System.out.print(canon(read(files.get(0)), own));
                return;
            case "xml2fi":
                want(files, 2);
                write(files.get(1), xmlToFi(read(files.get(0)), stax, decl));
                return;
            case "typed":
                want(files, 1);
                write(files.get(0), typedDocument(decl));
                return;
            default:
                throw new Failure(2, "unknown command " + args[0]);
        }
    }

    static void want(List<String> files, int count) throws Failure {
        if (files.size() != count)
            throw new Failure(2, "expected " + count + " file name(s), got " + files);
    }

    static byte[] read(String path) throws Failure {
        try {
            return Files.readAllBytes(Paths.get(path));
        } catch (IOException e) {
            throw new Failure(3, "cannot read " + path + ": " + e.getMessage());
        }
    }

    static void write(String path, byte[] bytes) throws Failure {
        try {
            Files.write(Paths.get(path), bytes);
        } catch (IOException e) {
            throw new Failure(3, "cannot write " + path + ": " + e.getMessage());
        }
    }

    // Where the Fast Infoset identification starts, or -1 for XML text.
    static int fiStart(byte[] b) {
        if (b.length >= 4 && (b[0] & 0xFF) == 0xE0 && b[1] == 0 && b[2] == 0 && b[3] == 1)
            return 0;
        String head = new String(b, 0, Math.min(b.length, 200), StandardCharsets.ISO_8859_1);
        int end = head.indexOf("?>");
        if (head.startsWith("<?xml") && end > 0 && head.substring(0, end).matches("(?s).*encoding\\s*=\\s*(['\"])finf\\1.*"))
            return end + 2;
        return -1;
    }

    // ------------------------------------------------------------------ canon

    static String canon(byte[] data, boolean own) throws Failure {
        Canon canon = new Canon();
        int start = fiStart(data);
        try {
            if (start < 0) {
                SAXParserFactory factory = SAXParserFactory.newInstance();
                factory.setNamespaceAware(true);
                XMLReader reader = factory.newSAXParser().getXMLReader();
                reader.setContentHandler(canon);
                reader.setProperty("http://xml.org/sax/properties/lexical-handler", canon);
                reader.parse(new InputSource(new ByteArrayInputStream(data)));
            } else if (own) {
                new Walker(data, start, canon).document();
            } else {
                SAXDocumentParser parser = new SAXDocumentParser();
                parser.setContentHandler(canon);
                parser.setLexicalHandler(canon);
                parser.parse(new ByteArrayInputStream(data));
            }
        } catch (Failure f) {
            throw f;
        } catch (Exception e) {
            throw refused(e.toString());
        }
        return canon.out.toString();
    }

    // One line an event; attributes sorted, adjacent text joined, namespace
    // declarations and prefixes left out; an xsi:type whose prefix is bound
    // prints as the name it stands for.
    static final class Canon extends DefaultHandler implements LexicalHandler {
        final StringBuilder out = new StringBuilder();
        final StringBuilder text = new StringBuilder();
        final Deque<Map<String, String>> scopes = new ArrayDeque<>();
        Map<String, String> pending = new HashMap<>();
        int dtdDepth = 0;

        void flush() {
            if (text.length() > 0)
                out.append("TEXT ").append(quote(text)).append('\n');
            text.setLength(0);
        }

        String resolve(String prefix) {
            for (Map<String, String> scope : scopes)
                if (scope.containsKey(prefix))
                    return scope.get(prefix);
            return null;
        }

        @Override
        public void startPrefixMapping(String prefix, String uri) {
            pending.put(prefix, uri);
        }

        @Override
        public void startElement(String uri, String local, String qName, Attributes attributes) {
            flush();
            scopes.push(pending);
            pending = new HashMap<>();
            out.append("START ").append(name(uri, local)).append('\n');
            List<String[]> sorted = new ArrayList<>();
            for (int i = 0; i < attributes.getLength(); ++i) {
                String q = attributes.getQName(i);
                if (XMLNS_NS.equals(attributes.getURI(i)) || q.equals("xmlns") || q.startsWith("xmlns:"))
                    continue;
                String value = attributes.getValue(i);
                if (XSI_NS.equals(attributes.getURI(i)) && attributes.getLocalName(i).equals("type")) {
                    int colon = value.indexOf(':');
                    String ns = resolve(colon < 0 ? "" : value.substring(0, colon));
                    if (ns != null)
                        value = "qname " + name(ns, value.substring(colon + 1));
                }
                sorted.add(new String[] {attributes.getURI(i), attributes.getLocalName(i), value});
            }
            sorted.sort((a, b) -> a[0].equals(b[0]) ? a[1].compareTo(b[1]) : a[0].compareTo(b[0]));
            for (String[] a : sorted)
                out.append("ATTR ").append(name(a[0], a[1])).append(' ').append(quote(a[2])).append('\n');
        }

        @Override
        public void endElement(String uri, String local, String qName) {
            flush();
            scopes.pop();
            out.append("END ").append(name(uri, local)).append('\n');
        }

        @Override
        public void characters(char[] ch, int start, int length) {
            text.append(ch, start, length);
        }

        @Override
        public void ignorableWhitespace(char[] ch, int start, int length) {
            text.append(ch, start, length);
        }

        @Override
        public void processingInstruction(String target, String data) {
            flush();
            out.append("PI ").append(target).append(' ').append(quote(data == null ? "" : data)).append('\n');
        }

        @Override
        public void startDocument() {}

        @Override
        public void endDocument() {
            flush();
        }

        @Override
        public void comment(char[] ch, int start, int length) {
            if (dtdDepth > 0)
                return;
            flush();
            out.append("COMMENT ").append(quote(new String(ch, start, length))).append('\n');
        }

        @Override
        public void startDTD(String name, String publicId, String systemId) {
            ++dtdDepth;
        }

        @Override
        public void endDTD() {
            --dtdDepth;
        }

        @Override
        public void startEntity(String name) {}

        @Override
        public void endEntity(String name) {}

        @Override
        public void startCDATA() {}

        @Override
        public void endCDATA() {}

        static String name(String uri, String local) {
            return "{" + (uri == null ? "" : uri) + "}" + local;
        }
    }

    static String quote(CharSequence s) {
        StringBuilder q = new StringBuilder("\"");
        for (int i = 0; i < s.length(); ++i) {
            char c = s.charAt(i);
            switch (c) {
                case '\n': q.append("\\n"); break;
                case '\r': q.append("\\r"); break;
                case '\t': q.append("\\t"); break;
                case '\\': q.append("\\\\"); break;
                case '"': q.append("\\\""); break;
                default:
                    if (c < 0x20 || (c >= 0x7F && c <= 0x9F))
                        q.append(String.format("\\u{%04X}", (int) c));
                    else
                        q.append(c);
            }
        }
        return q.append('"').toString();
    }

    // ------------------------------------------------------------------ xml2fi

    static byte[] xmlToFi(byte[] xml, boolean stax, boolean decl) throws Failure {
        ByteArrayOutputStream out = new ByteArrayOutputStream();
        if (decl)
            out.writeBytes(FINF_DECL.getBytes(StandardCharsets.US_ASCII));
        try {
            DefaultHandler sink;
            LexicalHandler lexical;
            if (stax) {
                StaxBridge bridge = new StaxBridge(new StAXDocumentSerializer(out));
                sink = bridge;
                lexical = bridge;
            } else {
                SAXDocumentSerializer serializer = new SAXDocumentSerializer();
                serializer.setOutputStream(out);
                sink = serializer;
                lexical = serializer;
            }
            SAXParserFactory factory = SAXParserFactory.newInstance();
            factory.setNamespaceAware(true);
            XMLReader reader = factory.newSAXParser().getXMLReader();
            reader.setContentHandler(sink);
            reader.setProperty("http://xml.org/sax/properties/lexical-handler", new OutsideDtd(lexical));
            reader.parse(new InputSource(new ByteArrayInputStream(xml)));
        } catch (Exception e) {
            throw refused(e.toString());
        }
        return out.toByteArray();
    }

    // Comments inside the document type declaration are not content.
    static final class OutsideDtd implements LexicalHandler {
        final LexicalHandler next;
        int depth = 0;

        OutsideDtd(LexicalHandler next) {
            this.next = next;
        }

        public void startDTD(String name, String publicId, String systemId) {
            ++depth;
        }

        public void endDTD() {
            --depth;
        }

        public void startEntity(String name) {}

        public void endEntity(String name) {}

        public void startCDATA() throws SAXException {
            next.startCDATA();
        }

        public void endCDATA() throws SAXException {
            next.endCDATA();
        }

        public void comment(char[] ch, int start, int length) throws SAXException {
            if (depth == 0)
                next.comment(ch, start, length);
        }
    }

    // SAX events to the codec's StAX serializer.
    static final class StaxBridge extends DefaultHandler implements LexicalHandler {
        final XMLStreamWriter w;
        final List<String[]> declarations = new ArrayList<>();
        StringBuilder cdata;

        StaxBridge(XMLStreamWriter w) {
            this.w = w;
        }

        static SAXException wrap(XMLStreamException e) {
            return new SAXException(e);
        }

        @Override
        public void startDocument() throws SAXException {
            try {
                w.writeStartDocument();
            } catch (XMLStreamException e) {
                throw wrap(e);
            }
        }

        @Override
        public void endDocument() throws SAXException {
            try {
                w.writeEndDocument();
                w.close();
            } catch (XMLStreamException e) {
                throw wrap(e);
            }
        }

        @Override
        public void startPrefixMapping(String prefix, String uri) {
            declarations.add(new String[] {prefix, uri});
        }

        @Override
        public void startElement(String uri, String local, String qName, Attributes attributes) throws SAXException {
            try {
                int colon = qName.indexOf(':');
                w.writeStartElement(colon < 0 ? "" : qName.substring(0, colon), local, uri);
                for (String[] d : declarations) {
                    if (d[0].isEmpty())
                        w.writeDefaultNamespace(d[1]);
                    else
                        w.writeNamespace(d[0], d[1]);
                }
                declarations.clear();
                for (int i = 0; i < attributes.getLength(); ++i) {
                    String q = attributes.getQName(i);
                    int c = q.indexOf(':');
                    w.writeAttribute(c < 0 ? "" : q.substring(0, c), attributes.getURI(i), attributes.getLocalName(i),
                                     attributes.getValue(i));
                }
            } catch (XMLStreamException e) {
                throw wrap(e);
            }
        }

        @Override
        public void endElement(String uri, String local, String qName) throws SAXException {
            try {
                w.writeEndElement();
            } catch (XMLStreamException e) {
                throw wrap(e);
            }
        }

        @Override
        public void characters(char[] ch, int start, int length) throws SAXException {
            if (cdata != null) {
                cdata.append(ch, start, length);
                return;
            }
            try {
                w.writeCharacters(ch, start, length);
            } catch (XMLStreamException e) {
                throw wrap(e);
            }
        }

        @Override
        public void processingInstruction(String target, String data) throws SAXException {
            try {
                w.writeProcessingInstruction(target, data);
            } catch (XMLStreamException e) {
                throw wrap(e);
            }
        }

        public void comment(char[] ch, int start, int length) throws SAXException {
            try {
                w.writeComment(new String(ch, start, length));
            } catch (XMLStreamException e) {
                throw wrap(e);
            }
        }

        public void startCDATA() {
            cdata = new StringBuilder();
        }

        public void endCDATA() throws SAXException {
            try {
                w.writeCData(cdata.toString());
            } catch (XMLStreamException e) {
                throw wrap(e);
            }
            cdata = null;
        }

        public void startDTD(String name, String publicId, String systemId) {}

        public void endDTD() {}

        public void startEntity(String name) {}

        public void endEntity(String name) {}
    }

    // ------------------------------------------------------------------ typed

    // Every built-in encoding algorithm and restricted alphabet as element
    // content, and five typed attributes on <attrs>.
    static byte[] typedDocument(boolean decl) throws Failure {
        ByteArrayOutputStream out = new ByteArrayOutputStream();
        if (decl)
            out.writeBytes(FINF_DECL.getBytes(StandardCharsets.US_ASCII));
        SAXDocumentSerializer s = new SAXDocumentSerializer();
        s.setOutputStream(out);
        AttributesImpl none = new AttributesImpl();
        try {
            s.startDocument();
            s.startElement("", "typed", "typed", none);
            byte[] hex = {(byte) 0xDE, (byte) 0xAD, (byte) 0xBE, (byte) 0xEF, 0x00, 0x0A};
            byte[] base64 = {0x00, 0x01, 0x7F, (byte) 0x80, (byte) 0xFE, (byte) 0xFF, 'H', 'i'};
            UUID a = UUID.fromString("123e4567-e89b-12d3-a456-426614174000");
            UUID b = UUID.fromString("00000000-0000-0000-0000-000000000001");
            char[] numeric = "-123.45E6".toCharArray();
            char[] when = "2001-12-31T23:59:59Z".toCharArray();
            char[] cdata = "if (a < b && c > d) {}".toCharArray();
            String[] names = {"hex", "base64", "short", "int", "long", "boolean", "float", "double", "uuid", "cdata",
                              "numeric", "datetime"};
            for (String name : names) {
                s.startElement("", name, name, none);
                switch (name) {
                    case "hex": s.octets(null, EncodingAlgorithmIndexes.HEXADECIMAL, hex, 0, hex.length); break;
                    case "base64": s.bytes(base64, 0, base64.length); break;
                    case "short": s.shorts(new short[] {0, 1, -1, Short.MAX_VALUE, Short.MIN_VALUE}, 0, 5); break;
                    case "int":
                        s.ints(new int[] {0, 1, -1, Integer.MAX_VALUE, Integer.MIN_VALUE, 123456789}, 0, 6);
                        break;
                    case "long":
                        s.longs(new long[] {0, -1, Long.MAX_VALUE, Long.MIN_VALUE, 1234567890123L}, 0, 5);
                        break;
                    case "boolean": s.booleans(new boolean[] {true, false, true, true, false}, 0, 5); break;
                    case "float": s.floats(new float[] {0f, 1.5f, -2.25f, 1024.125f, Float.MAX_VALUE}, 0, 5); break;
                    case "double": s.doubles(new double[] {0, 3.5, -0.125, 0.1, 1e300}, 0, 5); break;
                    case "uuid":
                        s.uuids(new long[] {a.getMostSignificantBits(), a.getLeastSignificantBits(),
                                            b.getMostSignificantBits(), b.getLeastSignificantBits()}, 0, 4);
                        break;
                    case "cdata":
                        s.startCDATA();
                        s.characters(cdata, 0, cdata.length);
                        s.endCDATA();
                        break;
                    case "numeric": s.numericCharacters(numeric, 0, numeric.length); break;
                    case "datetime": s.dateTimeCharacters(when, 0, when.length); break;
                }
                s.endElement("", name, name);
            }
            EncodingAlgorithmAttributesImpl attributes = new EncodingAlgorithmAttributesImpl();
            attributes.addAttributeWithBuiltInAlgorithmData("", "count", "count", EncodingAlgorithmIndexes.INT,
                                                            new int[] {42});
            attributes.addAttributeWithBuiltInAlgorithmData("", "ratio", "ratio", EncodingAlgorithmIndexes.FLOAT,
                                                            new float[] {0.5f});
            attributes.addAttributeWithBuiltInAlgorithmData("", "flag", "flag", EncodingAlgorithmIndexes.BOOLEAN,
                                                            new boolean[] {true});
            attributes.addAttributeWithBuiltInAlgorithmData("", "blob", "blob", EncodingAlgorithmIndexes.BASE64,
                                                            new byte[] {1, 2, 3});
            attributes.addAttribute("", "when", "when", "CDATA", "2024-02-29T12:00:00Z", true,
                                    RestrictedAlphabet.DATE_TIME_CHARACTERS);
            s.startElement("", "attrs", "attrs", attributes);
            s.endElement("", "attrs", "attrs");
            s.endElement("", "typed", "typed");
            s.endDocument();
        } catch (SAXException e) {
            throw new Failure(5, e.toString());
        }
        return out.toByteArray();
    }

    // ------------------------------------------------------------------ Walker

    // Our own reading of a Fast Infoset document into SAX events, written
    // from the format alone. It binds the prefix of a literal qualified name
    // where no namespace attribute did, and refuses what the tests never
    // send: initial vocabularies, notations, unparsed entities, document
    // type declarations and entity references.
    static final class Walker {
        final byte[] b;
        int pos;
        final Canon h;
        int pendingTerminators = 0;
        final List<String> prefixes = new ArrayList<>(Arrays.asList("xml"));
        final List<String> namespaces = new ArrayList<>(Arrays.asList(XML_NS));
        final List<String> localNames = new ArrayList<>();
        final List<String[]> elementNames = new ArrayList<>();
        final List<String[]> attributeNames = new ArrayList<>();
        final List<String> attributeValues = new ArrayList<>();
        final List<String> chunks = new ArrayList<>();
        final List<String> otherNCNames = new ArrayList<>();
        final List<String> otherStrings = new ArrayList<>();
        final Deque<Map<String, String>> scopes = new ArrayDeque<>();

        Walker(byte[] b, int start, Canon h) {
            this.b = b;
            this.pos = start;
            this.h = h;
        }

        int octet() throws Failure {
            if (pos >= b.length)
                throw refused("unexpected end at octet " + pos);
            return b[pos++] & 0xFF;
        }

        int four() throws Failure {
            return (octet() << 24) | (octet() << 16) | (octet() << 8) | octet();
        }

        byte[] take(long length) throws Failure {
            if (length < 0 || length > b.length - pos)
                throw refused("a length of " + length + " runs past the end at octet " + pos);
            byte[] out = Arrays.copyOfRange(b, pos, pos + (int) length);
            pos += (int) length;
            return out;
        }

        static <T> T entry(List<T> table, long index, String what) throws Failure {
            if (index < 1 || index > table.size())
                throw refused(what + " index " + index + " not in its table of " + table.size());
            return table.get((int) index - 1);
        }

        // Integers 1 to 2^20 on the second, third and fourth bit.
        long integerBit2(int c) throws Failure {
            if ((c & 0x40) == 0)
                return (c & 0x3F) + 1;
            if ((c & 0x60) == 0x40)
                return (((c & 0x1F) << 8) | octet()) + 65;
            if ((c & 0x70) == 0x60)
                return (((c & 0x0F) << 16) | (octet() << 8) | octet()) + 8257;
            throw refused("bad integer on the second bit: " + c);
        }

        long integerBit3(int c) throws Failure {
            if ((c & 0x20) == 0)
                return (c & 0x1F) + 1;
            if ((c & 0x38) == 0x20)
                return (((c & 0x07) << 8) | octet()) + 33;
            if ((c & 0x38) == 0x28)
                return (((c & 0x07) << 16) | (octet() << 8) | octet()) + 2081;
            if ((c & 0x3F) == 0x30)
                return (((octet() & 0x0F) << 16) | (octet() << 8) | octet()) + 526369;
            throw refused("bad integer on the third bit: " + c);
        }

        long integerBit4(int c) throws Failure {
            if ((c & 0x10) == 0)
                return (c & 0x0F) + 1;
            if ((c & 0x1C) == 0x10)
                return (((c & 0x03) << 8) | octet()) + 17;
            if ((c & 0x1C) == 0x14)
                return (((c & 0x03) << 16) | (octet() << 8) | octet()) + 1041;
            if ((c & 0x1F) == 0x18)
                return (((octet() & 0x0F) << 16) | (octet() << 8) | octet()) + 263185;
            throw refused("bad integer on the fourth bit: " + c);
        }

        // Lengths of non-empty octet strings on the second, fifth and seventh bit.
        long lengthBit2(int c) throws Failure {
            if ((c & 0x40) == 0)
                return (c & 0x3F) + 1;
            if ((c & 0x7F) == 0x40)
                return octet() + 65;
            if ((c & 0x7F) == 0x60)
                return (four() & 0xFFFFFFFFL) + 321;
            throw refused("bad length on the second bit: " + c);
        }

        long lengthBit5(int c) throws Failure {
            if ((c & 0x08) == 0)
                return (c & 0x07) + 1;
            if ((c & 0x0F) == 0x08)
                return octet() + 9;
            if ((c & 0x0F) == 0x0C)
                return (four() & 0xFFFFFFFFL) + 265;
            throw refused("bad length on the fifth bit: " + c);
        }

        long lengthBit7(int c) throws Failure {
            if ((c & 0x02) == 0)
                return (c & 0x01) + 1;
            if ((c & 0x03) == 0x02)
                return octet() + 3;
            return (four() & 0xFFFFFFFFL) + 259;
        }

        static String utf8(byte[] bytes) {
            return new String(bytes, StandardCharsets.UTF_8);
        }

        // An identifying string: a literal joins its table, or an index into it.
        String identifying(List<String> table, String what) throws Failure {
            int c = octet();
            if ((c & 0x80) != 0)
                return entry(table, integerBit2(c), what);
            String s = utf8(take(lengthBit2(c)));
            table.add(s);
            return s;
        }

        // A non-identifying string starting on the first bit (attribute
        // values, comments, instructions).
        String nonIdentifying(List<String> table, String what) throws Failure {
            int c = octet();
            if ((c & 0x80) != 0) {
                if ((c & 0x7F) == 0x7F)
                    return "";
                return entry(table, integerBit2(c), what);
            }
            String s;
            switch ((c >> 4) & 3) {
                case 0: s = utf8(take(lengthBit5(c))); break;
                case 1: s = new String(take(lengthBit5(c)), StandardCharsets.UTF_16BE); break;
                default: {
                    int next = octet();
                    int number = ((c & 0x0F) << 4) | (next >> 4);
                    byte[] bytes = take(lengthBit5(next));
                    s = ((c >> 4) & 3) == 2 ? alphabet(number, bytes) : algorithm(number, bytes);
                }
            }
            if ((c & 0x40) != 0)
                table.add(s);
            return s;
        }

        // A character chunk, its first octet already read.
        String chunk(int c) throws Failure {
            if ((c & 0x20) != 0)
                return entry(chunks, integerBit4(c), "character chunk");
            String s;
            switch ((c >> 2) & 3) {
                case 0: s = utf8(take(lengthBit7(c))); break;
                case 1: s = new String(take(lengthBit7(c)), StandardCharsets.UTF_16BE); break;
                default: {
                    int next = octet();
                    int number = ((c & 0x03) << 6) | (next >> 2);
                    byte[] bytes = take(lengthBit7(next));
                    s = ((c >> 2) & 3) == 2 ? alphabet(number, bytes) : algorithm(number, bytes);
                }
            }
            if ((c & 0x10) != 0)
                chunks.add(s);
            return s;
        }

        static String alphabet(int number, byte[] bytes) throws Failure {
            if (number >= BuiltInRestrictedAlphabets.table.length)
                throw refused("restricted alphabet " + (number + 1) + " is not built in");
            char[] letters = BuiltInRestrictedAlphabets.table[number];
            int bits = 1;
            while ((1 << bits) <= letters.length)
                ++bits;
            StringBuilder s = new StringBuilder();
            int total = bytes.length * 8;
            for (int at = 0; at + bits <= total; at += bits) {
                int v = 0;
                for (int i = at; i < at + bits; ++i)
                    v = (v << 1) | ((bytes[i / 8] >> (7 - i % 8)) & 1);
                if (v == (1 << bits) - 1)
                    break;
                if (v >= letters.length)
                    throw refused("letter " + v + " outside restricted alphabet " + (number + 1));
                s.append(letters[v]);
            }
            return s.toString();
        }

        static String algorithm(int number, byte[] bytes) throws Failure {
            if (number == EncodingAlgorithmIndexes.CDATA)
                return utf8(bytes);
            if (number > EncodingAlgorithmIndexes.UUID)
                throw refused("encoding algorithm " + (number + 1) + " is not built in");
            try {
                var algorithm = BuiltInEncodingAlgorithmFactory.getAlgorithm(number);
                StringBuffer s = new StringBuffer();
                algorithm.convertToCharacters(algorithm.decodeFromBytes(bytes, 0, bytes.length), s);
                return s.toString();
            } catch (Exception e) {
                throw refused("encoding algorithm " + (number + 1) + ": " + e.getMessage());
            }
        }

        String[] literalName(int flags, List<String[]> table) throws Failure {
            String prefix = (flags & 0x02) != 0 ? identifying(prefixes, "prefix") : "";
            String ns = (flags & 0x01) != 0 ? identifying(namespaces, "namespace name") : "";
            String[] name = {prefix, ns, identifying(localNames, "local name")};
            table.add(name);
            return name;
        }

        String bound(String prefix) {
            for (Map<String, String> scope : scopes)
                if (scope.containsKey(prefix))
                    return scope.get(prefix);
            return prefix.equals("xml") ? XML_NS : prefix.isEmpty() ? "" : null;
        }

        // Binds a name's prefix to its namespace where nothing in scope does.
        void bind(String[] name) {
            if (!name[1].equals(bound(name[0])) && !(name[0].isEmpty() && name[1].isEmpty())) {
                scopes.peek().put(name[0], name[1]);
                h.startPrefixMapping(name[0], name[1]);
            }
        }

        boolean terminated() throws Failure {
            if (pendingTerminators > 0) {
                --pendingTerminators;
                return true;
            }
            return false;
        }

        void document() throws Failure {
            if (four() != 0xE0000001)
                throw refused("no Fast Infoset identification");
            int flags = octet();
            if ((flags & 0x80) != 0)
                throw refused("padding bit set in the document octet");
            if ((flags & 0x40) != 0) { // additional data: pairs of octet strings
                int c = octet();
                long count = (c & 0x80) == 0 ? c + 1 : ((((long) c & 0x0F) << 16) | (octet() << 8) | octet()) + 129;
                for (long i = 0; i < 2 * count; ++i)
                    take(lengthBit2(octet()));
            }
            if ((flags & 0x38) != 0)
                throw refused("initial vocabulary, notations and unparsed entities are not read here");
            if ((flags & 0x04) != 0)
                take(lengthBit2(octet()));
            if ((flags & 0x02) != 0)
                octet();
            if ((flags & 0x01) != 0)
                nonIdentifying(otherStrings, "version");
            scopes.push(new HashMap<>());
            h.startDocument();
            content(true);
            h.endDocument();
            if (pendingTerminators > 0 || pos != b.length)
                throw refused("octets after the document at " + pos);
        }

        // Children up to the terminator of this level.
        void content(boolean atDocument) throws Failure {
            while (!terminated()) {
                int c = octet();
                if (c < 0x80)
                    element(c);
                else if (c < 0xC0 && !atDocument) {
                    String s = chunk(c);
                    h.characters(s.toCharArray(), 0, s.length());
                } else if (c == 0xE1) {
                    String target = identifying(otherNCNames, "instruction target");
                    h.processingInstruction(target, nonIdentifying(otherStrings, "instruction data"));
                } else if (c == 0xE2) {
                    String s = nonIdentifying(otherStrings, "comment");
                    h.comment(s.toCharArray(), 0, s.length());
                } else if (c == 0xF0)
                    return;
                else if (c == 0xFF) {
                    ++pendingTerminators;
                    return;
                } else
                    throw refused(String.format("octet %02X at %d is not read here", c, pos - 1));
            }
        }

        void element(int c) throws Failure {
            boolean hasAttributes = (c & 0x40) != 0;
            Map<String, String> scope = new HashMap<>();
            scopes.push(scope);
            int q = c;
            if ((c & 0x3F) == 0x38) {
                for (int d = octet(); d != 0xF0; d = octet()) {
                    if ((d & 0xFC) != 0xCC)
                        throw refused(String.format("octet %02X at %d in namespace attributes", d, pos - 1));
                    String prefix = (d & 0x02) != 0 ? identifying(prefixes, "prefix") : "";
                    String ns = (d & 0x01) != 0 ? identifying(namespaces, "namespace name") : "";
                    scope.put(prefix, ns);
                    h.startPrefixMapping(prefix, ns);
                }
                q = octet();
            }
            String[] name = (q & 0x3C) == 0x3C ? literalName(q, elementNames)
                                               : entry(elementNames, integerBit3(q), "element name");
            bind(name);
            AttributesImpl attributes = new AttributesImpl();
            while (hasAttributes && !terminated()) {
                int a = octet();
                if (a == 0xF0)
                    break;
                if (a == 0xFF) {
                    ++pendingTerminators;
                    break;
                }
                if ((a & 0x80) != 0)
                    throw refused(String.format("octet %02X at %d in attributes", a, pos - 1));
                String[] an = (a & 0x7C) == 0x78 ? literalName(a, attributeNames)
                                                 : entry(attributeNames, integerBit2(a), "attribute name");
                bind(an);
                String value = nonIdentifying(attributeValues, "attribute value");
                attributes.addAttribute(an[1], an[2], an[0].isEmpty() ? an[2] : an[0] + ":" + an[2], "CDATA", value);
            }
            String qName = name[0].isEmpty() ? name[2] : name[0] + ":" + name[2];
            h.startElement(name[1], name[2], qName, attributes);
            content(false);
            h.endElement(name[1], name[2], qName);
            scopes.pop();
        }
    }
}
