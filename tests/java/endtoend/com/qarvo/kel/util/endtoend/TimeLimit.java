package com.qarvo.kel.util.endtoend;

import java.lang.reflect.Method;
import java.util.Map;
import java.util.concurrent.Executors;
import java.util.concurrent.ScheduledExecutorService;
import java.util.concurrent.ScheduledFuture;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.extension.ExtensionContext;
import org.junit.jupiter.api.extension.InvocationInterceptor;
import org.junit.jupiter.api.extension.ReflectiveInvocationContext;

/**
 * Ends a run whose test hangs in a native method: such a thread cannot be interrupted, so all that is left is to print
 * where every thread stands and to stop the JVM.
 */
final class TimeLimit implements InvocationInterceptor {
    private static final int LIMIT_SECONDS = 180;
    private static final int EXIT_CODE = 99;

    private static final ScheduledExecutorService WATCH = Executors.newSingleThreadScheduledExecutor(task -> {
        Thread thread = new Thread(task, "time limit");
        thread.setDaemon(true);
        return thread;
    });

    @Override
    public void interceptTestMethod(Invocation<Void> invocation, ReflectiveInvocationContext<Method> method,
            ExtensionContext context) throws Throwable {
        watch(invocation, context);
    }

    @Override
    public void interceptTestTemplateMethod(Invocation<Void> invocation, ReflectiveInvocationContext<Method> method,
            ExtensionContext context) throws Throwable {
        watch(invocation, context);
    }

    private static void watch(Invocation<Void> invocation, ExtensionContext context) throws Throwable {
        String name = context.getRequiredTestMethod().toString();
        ScheduledFuture<?> end = WATCH.schedule(() -> stop(name), LIMIT_SECONDS, TimeUnit.SECONDS);
        try {
            invocation.proceed();
        } finally {
            end.cancel(false);
        }
    }

    private static void stop(String test) {
        System.out.println("Not ended within " + LIMIT_SECONDS + " s: " + test);
        for (Map.Entry<Thread, StackTraceElement[]> entry : Thread.getAllStackTraces().entrySet()) {
            System.out.println("\n\"" + entry.getKey().getName() + "\" " + entry.getKey().getState());
            for (StackTraceElement frame : entry.getValue()) {
                System.out.println("    at " + frame);
            }
        }
        System.out.flush();
        Runtime.getRuntime().halt(EXIT_CODE);
    }
}
