package com.qarvo.kel.util.endtoend;

import com.qarvo.kel.util.Win32;
import com.qarvo.kel.util.WinProcess;
import com.sun.jna.platform.win32.Advapi32Util;
import com.sun.jna.platform.win32.Kernel32;
import com.sun.jna.platform.win32.WinBase;
import com.sun.jna.platform.win32.WinNT.HANDLE;
import com.sun.jna.platform.win32.WinReg;
import java.io.IOException;
import java.io.PrintWriter;
import java.lang.reflect.InvocationTargetException;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.TreeMap;
import java.util.concurrent.Callable;

/**
 * Calls every native method with what nobody should pass: one argument at a time, the others harmless, then all at
 * once. A line says what is called before it is called; a call that gives what its Javadoc does not promise is reported
 * and the next one made. {@code HostileCalls SOURCE FOLDER FIRST}, with the number of the first call.
 */
final class HostileCalls {
    private static final String KEY = "Software\\WinUtilHostile";
    private static final long PATIENCE_NANOS = 30_000_000_000L;
    private static final int HUNG = 77;
    private static final String ALL = "all at once";

    /** One call: what to name it, and where which value goes. */
    private record Call(DocumentedNative method, String name, Map<Integer, HostileValues.Hostile> hostile) {
    }

    private final HarmlessArguments harmless;
    private final Set<String> keys;
    private final PrintWriter calls;
    private final PrintWriter findings;
    private volatile long begun;
    private volatile Call current;

    private HostileCalls(Path folder) throws IOException {
        keys = keysAtFirst(folder.resolve("keys"));
        harmless = new HarmlessArguments(Files.createDirectories(folder.resolve("files")),
                System.getProperty("winutil.test.volume", "no volume"), KEY);
        calls = append(folder.resolve("calls"));
        findings = append(folder.resolve("findings"));
    }

    private static PrintWriter append(Path file) throws IOException {
        return new PrintWriter(Files.newBufferedWriter(file, StandardCharsets.UTF_8, StandardOpenOption.CREATE,
                StandardOpenOption.APPEND), true);
    }

    public static void main(String[] arguments) throws Exception {
        HostileCalls hostile = new HostileCalls(Path.of(arguments[1]));
        LeftOut leftOut = new LeftOut();
        List<Call> calls = new ArrayList<>();
        for (DocumentedNative method : DocumentedNative.all(Path.of(arguments[0]))) {
            hostile.addCalls(calls, method, leftOut);
        }
        Files.write(Path.of(arguments[1], "left out"), leftOut.list());
        EndToEnd.util.CoInitializeEx(Win32.COINIT_MULTITHREADED);
        hostile.watch();
        hostile.serve();
        for (int i = Integer.parseInt(arguments[2]); i < calls.size(); i++) {
            hostile.calls.println(i + "\t" + calls.get(i).name);
            hostile.make(calls.get(i));
        }
        hostile.calls.println(calls.size() + "\tthe end");
        hostile.removeKeys();
        Runtime.getRuntime().halt(0);
    }

    /** The current user's keys, as they were when the first of the JVMs began. */
    private static Set<String> keysAtFirst(Path file) throws IOException {
        if (!Files.exists(file)) {
            Files.write(file, List.of(Advapi32Util.registryGetKeys(WinReg.HKEY_CURRENT_USER)));
        }
        return Set.copyOf(Files.readAllLines(file));
    }

    private void removeKeys() {
        OwnRegistryKey.remove(KEY);
        for (String key : Advapi32Util.registryGetKeys(WinReg.HKEY_CURRENT_USER)) {
            if (!keys.contains(key)) {
                OwnRegistryKey.remove(key);
            }
        }
    }

    private void addCalls(List<Call> made, DocumentedNative method, LeftOut leftOut) throws IOException {
        List<List<HostileValues.Hostile>> values = new ArrayList<>();
        for (int i = 0; i < method.parameters().size(); i++) {
            int parameter = i;
            List<HostileValues.Hostile> all = HostileValues.of(method.type(i),
                    method.type(i) == String.class ? harmless.of(method, i) : null);
            List<HostileValues.Hostile> own = all.stream()
                    .filter(each -> !leftOut.covers(method, parameter, each.value())).toList();
            values.add(own);
            for (HostileValues.Hostile each : own) {
                made.add(new Call(method, method.name() + " " + method.parameters().get(i) + ": " + each.name(),
                        Map.of(i, each)));
            }
        }
        int most = values.stream().mapToInt(List::size).max().orElse(1);
        for (int round = 0; round < most; round++) {
            Map<Integer, HostileValues.Hostile> together = new TreeMap<>();
            for (int i = 0; i < values.size(); i++) {
                together.put(i, values.get(i).get(round % values.get(i).size()));
            }
            made.add(new Call(method, method.name() + " " + ALL + ": " + together.values().stream()
                    .map(HostileValues.Hostile::name).toList(), together));
        }
    }

    /** Ends the JVM when a call does not return. */
    private void watch() {
        startDaemon(() -> {
            Call call = current;
            Thread.sleep(100);
            if (call != null && call == current && System.nanoTime() - begun > PATIENCE_NANOS) {
                findings.println(call.name + "\tdoes not return");
                Runtime.getRuntime().halt(HUNG);
            }
            return null;
        });
    }

    /** Has somebody to send to. */
    private void serve() {
        startDaemon(() -> EndToEnd.util.connectPipe(HarmlessArguments.SERVED_PIPE));
    }

    /** Does something again and again, until the JVM ends. */
    private static void startDaemon(Callable<?> work) {
        Thread thread = new Thread(() -> {
            try {
                while (true) {
                    work.call();
                }
            } catch (Exception e) {
                throw new IllegalStateException(e);
            }
        });
        thread.setDaemon(true);
        thread.start();
    }

    private void make(Call call) throws Exception {
        Object[] arguments = new Object[call.method.parameters().size()];
        for (int i = 0; i < arguments.length; i++) {
            HostileValues.Hostile hostile = call.hostile.get(i);
            arguments[i] = hostile == null ? harmless.of(call.method, i) : hostile.value();
        }
        fitRange(call.method, arguments);
        try (Visitor visitor = prepare(call.method.method().getName(), arguments)) {
            begun = System.nanoTime();
            current = call;
            Object answer = call.method.method().invoke(EndToEnd.util, arguments);
            if (answer == null && !call.method.mayAnswerNull()) {
                findings.println(call.name + "\tanswers null");
            }
            end(call, answer, arguments);
        } catch (InvocationTargetException e) {
            if (!call.method.documents(e.getCause()) && !isOfCollector(call, e.getCause())) {
                findings.println(call.name + "\traises " + e.getCause());
            }
        } finally {
            current = null;
        }
        release(call, arguments);
    }

    /** What a method needs before it is called; a visitor for one that waits for somebody, else null. */
    private static Visitor prepare(String method, Object[] arguments) {
        switch (method) {
            case "CoUninitialize" -> EndToEnd.util.CoInitializeEx(Win32.COINIT_MULTITHREADED);
            case "sendPipe" -> {
                if (arguments[0].equals(HarmlessArguments.SERVED_PIPE)) {
                    PipeEnd.awaitServer(HarmlessArguments.SERVED_PIPE);
                }
            }
            case "connectPipe" -> {
                return new Visitor((String) arguments[0]);
            }
            default -> {
                // Nothing.
            }
        }
        return null;
    }

    /** The range stays within the array or buffer: that it does is the caller's duty. */
    private static void fitRange(DocumentedNative method, Object[] arguments) {
        int offset = method.parameters().indexOf("offset");
        int length = method.parameters().indexOf("length");
        if (offset < 0) {
            return;
        }
        Object room = arguments[offset - 1];
        int capacity = room instanceof byte[] bytes ? bytes.length : room == null ? 0 : ((ByteBuffer) room).capacity();
        arguments[offset] = Math.min((int) arguments[offset], capacity);
        arguments[length] = Math.min((int) arguments[length], capacity - (int) arguments[offset]);
    }

    /** What a collector throws reaches the caller. */
    private static boolean isOfCollector(Call call, Throwable thrown) {
        return thrown instanceof UnsupportedOperationException
                && call.hostile.values().stream().anyMatch(each -> each.name().equals("an immutable list"));
    }

    /** Gives back what a call has opened, started or loaded. */
    private static void end(Call call, Object answer, Object[] arguments) {
        switch (call.method.method().getName()) {
            case "createFileNC", "createFileN", "openFile" -> EndToEnd.util.closeFile((long) answer);
            case "loadRegistry" -> {
                if ((boolean) answer) {
                    EndToEnd.util.unloadRegistry((String) arguments[0], (String) arguments[1]);
                }
            }
            case "CoInitializeEx" -> {
                if ((int) answer >= 0) {
                    EndToEnd.util.CoUninitialize();
                }
            }
            default -> {
                if (answer instanceof WinProcess process) {
                    process.close();
                }
            }
        }
    }

    /** Gives back what was opened for a call. */
    private static void release(Call call, Object[] arguments) throws IOException {
        int record = call.method.parameters().indexOf("record");
        if (record >= 0 && !call.method.method().getName().equals("closeFile")) {
            EndToEnd.util.closeFile((long) arguments[record]);
        }
        EndToEnd.util.impersonateToSelf();
    }

    /** Comes to a pipe as soon as there is one, says nothing and goes, until it is sent away. */
    private static final class Visitor extends Thread implements AutoCloseable {
        private final String pipe;
        private volatile boolean wanted = true;

        Visitor(String pipe) {
            this.pipe = pipe;
            start();
        }

        @Override
        public void run() {
            while (wanted) {
                HANDLE client = Kernel32.INSTANCE.CreateFile(pipe, EndToEnd.READ_WRITE, 0, null,
                        EndToEnd.OPEN_EXISTING, 0, null);
                if (!WinBase.INVALID_HANDLE_VALUE.equals(client)) {
                    Kernel32.INSTANCE.CloseHandle(client);
                }
            }
        }

        @Override
        public void close() throws InterruptedException {
            wanted = false;
            join();
        }
    }
}
