package com.qarvo.kel.util.endtoend;

import com.sun.management.OperatingSystemMXBean;
import java.lang.management.ManagementFactory;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import javax.management.JMException;
import javax.management.ObjectName;

/** What this process holds: by the system's account, and by that of the JVM, which knows its own part. */
final class ProcessMeter {
    private static final Pattern COMMITTED = Pattern.compile("Total: .*committed=(\\d+)");
    private static final Pattern GLOBAL_REFERENCES = Pattern.compile("JNI global refs: (\\d+)");

    private ProcessMeter() {
    }

    /** The bytes that the system has committed to this process alone. */
    static long privateBytes() {
        return ManagementFactory.getPlatformMXBean(OperatingSystemMXBean.class).getCommittedVirtualMemorySize();
    }

    /** The bytes that the JVM itself has committed; it must have been started with its native memory tracked. */
    static long bytesOfTheJvm() throws JMException {
        return find(COMMITTED, command("vmNativeMemory", "summary", "scale=B"));
    }

    static long heapBytes() {
        return ManagementFactory.getMemoryMXBean().getHeapMemoryUsage().getUsed();
    }

    static long globalReferences() throws JMException {
        return find(GLOBAL_REFERENCES, command("threadPrint"));
    }

    private static String command(String name, String... arguments) throws JMException {
        return (String) ManagementFactory.getPlatformMBeanServer().invoke(
                new ObjectName("com.sun.management:type=DiagnosticCommand"), name, new Object[] {arguments},
                new String[] {String[].class.getName()});
    }

    private static long find(Pattern pattern, String text) {
        Matcher found = pattern.matcher(text);
        if (!found.find()) {
            throw new IllegalStateException("No " + pattern + " in " + text);
        }
        return Long.parseLong(found.group(1));
    }
}
